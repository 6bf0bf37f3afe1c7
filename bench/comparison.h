#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

namespace rebate::bench {

// A work held against its floor: the same done by hand, or the same work on a smaller account. The two take turns in
// the loop of one benchmark, so that what else the machine does slows both, and their medians are compared.
//
//     Comparison comparison(state);
//     for (auto _ : state) {
//       comparison.Work([&] { ... });
//       comparison.Floor([&] { ... });
//     }
//
// At its end it sets the counters `ratio` (of the times by the clock), `cpu_ratio` (of this thread's processor times),
// `cpu_ms` (the work's processor time) and `floor_ms` (the floor's time by the clock). Where a turn does the same many
// times, `each_us` is one time, and `over_us` how much longer it takes than the floor's. The benchmark must be
// registered with UseManualTime(): the time shown is the work's alone.
class Comparison {
 public:
  explicit Comparison(benchmark::State& state, int times_a_turn = 1) : state_(state), times_(times_a_turn) {}
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;
  ~Comparison();

  template <typename Call>
  void Work(const Call& call) {
    state_.SetIterationTime(Measure(work_, call));
  }
  template <typename Call>
  void Floor(const Call& call) {
    Measure(floor_, call);
  }

 private:
  struct Times {
    std::vector<double> clock;  // seconds, one for each turn
    std::vector<double> processor;
  };

  static double ProcessorTime();
  // The seconds that the call takes by the clock.
  template <typename Call>
  static double Measure(Times& times, const Call& call) {
    const double processor = ProcessorTime();
    const auto start = std::chrono::steady_clock::now();
    call();
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    times.processor.push_back(ProcessorTime() - processor);
    times.clock.push_back(passed.count());
    return passed.count();
  }

  benchmark::State& state_;
  int times_;
  Times work_;
  Times floor_;
};

}  // namespace rebate::bench
