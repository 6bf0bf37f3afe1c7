// Eight writers on one account against one that does as much, and what a reader beside them waits.

#include <algorithm>
#include <atomic>
#include <thread>

#include "bench/comparison.h"
#include "bench/stored_schemes.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {
namespace {

constexpr int kWriters = 8;
constexpr int kSaves = 300;  // of each

// Saves schemes of one organisation each, from `first` on.
void Save(const Text& dsn, int first, int count) {
  BaseInfoMgr manager;
  Ref<Dictionary> type = Row({{"FRebateType", 2040}, {"FRangeItemClass", 8}});
  Ref<Vector> ranges = New<Vector>();
  for (int i = 0; i < 5; ++i) ranges->Add(Row({{"FLowerLimit", i * 100}, {"FUpperLimit", i * 100 + 100}}));
  Ref<Vector> rates = New<Vector>();
  rates->Add(Row({{"FRowID", 1}, {"FRebateRate", "2.5"}, {"FIndex", 1}}));
  Ref<Vector> grid_rows = New<Vector>();
  grid_rows->Add(Row({{"FRebateRates", rates}, {"FZH", 0}}));
  for (int i = first; i < first + count; ++i) {
    Ref<Dictionary> head = Row({{"FSchemeID", 0}, {"FSchemeName", "scheme " + std::to_string(i)}, {"FNote", "note"}});
    Ref<Vector> organisations = New<Vector>();
    organisations->Add(Row({{"FRowID", 0}, {"FItemClassID", 8}, {"FItemID", i}, {"FShowName", "organisation"}}));
    const Ref<Dictionary> answer = manager.SaveOneSchemeData(dsn, type, head, ranges, organisations, grid_rows);
    Require(ToBoolean(answer->Value("OK")), ToText(answer->GetValue("Err", "the save")).c_str());
  }
}

void RunWriters(const Text& dsn, int writers, int saves) {
  std::vector<std::thread> threads;
  for (int i = 0; i < writers; ++i) threads.emplace_back([=] { Save(dsn, i * saves + 1, saves); });
  for (std::thread& thread : threads) thread.join();
}

void EightWriters(benchmark::State& state) {
  Comparison comparison(state);
  for (auto _ : state) {
    const BenchAccount account;
    const BenchAccount floor_account;
    comparison.Work([&] { RunWriters(account.dsn(), kWriters, kSaves); });
    comparison.Floor([&] { RunWriters(floor_account.dsn(), 1, kWriters * kSaves); });
  }
}

// One read, and the slowest of those that a thread makes while the writers write.
void ReaderBesideWriters(benchmark::State& state) {
  double slowest = 0;
  for (auto _ : state) {
    const BenchAccount account;
    std::atomic<bool> writing = true;
    std::thread writers([&] {
      RunWriters(account.dsn(), kWriters, kSaves);
      writing = false;
    });
    BaseInfoMgr manager;
    int reads = 0;
    double total = 0;
    while (writing) {
      const auto start = std::chrono::steady_clock::now();
      Require(!manager.ExistsSchemeName(account.dsn(), 0, "no such name"), "the read");
      const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
      total += passed.count();
      slowest = std::max(slowest, passed.count());
      ++reads;
    }
    writers.join();
    state.SetIterationTime(total / reads);
  }
  state.counters["slowest_ms"] = slowest * 1000;
}

BENCHMARK(EightWriters)->Iterations(3)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(ReaderBesideWriters)->Iterations(3)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
