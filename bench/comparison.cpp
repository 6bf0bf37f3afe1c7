#include "bench/comparison.h"

#include <algorithm>
#include <ctime>

namespace rebate::bench {
namespace {

double MedianOf(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

Comparison::~Comparison() {
  const double work = MedianOf(work_.clock);
  const double floor = MedianOf(floor_.clock);
  const double processor = MedianOf(work_.processor);
  state_.counters["ratio"] = work / floor;
  state_.counters["cpu_ratio"] = processor / MedianOf(floor_.processor);
  state_.counters["cpu_ms"] = processor * 1000;
  state_.counters["floor_ms"] = floor * 1000;
  if (times_ == 1) return;
  state_.counters["each_us"] = work / times_ * 1e6;
  state_.counters["over_us"] = (work - floor) / times_ * 1e6;
}

double Comparison::ProcessorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace rebate::bench
