// Writing a rate grid as one batch against the same rows through prepared statements, and reading it back.

#include <benchmark/benchmark.h>

#include "bench/bench_account.h"
#include "platform/login/process_cache.h"
#include "platform/login_standins/host_cache.h"
#include "platform/login_standins/login_standins.h"
#include "service/component_classes.h"
#include "service/rebate_rule_mgr.h"

namespace rebate::bench {
namespace {

constexpr int kBands = 10;

void SaveRules(benchmark::State& state) {
  const BenchAccount account;
  RegisterLoginStandIns();
  RegisterComponent();
  Ref<Vector> rows = New<Vector>();
  for (int i = 0; i < state.range(0); ++i) {
    rows->Add(Row({{"FClassTypeID", 2041},
                   {"FItemID", "71"},
                   {"FOrgID", i},
                   {"FAmtRangeID", i % kBands + 1},
                   {"FRebateRate", 2.5},
                   {"FIndex", i % kBands + 1},
                   {"FSchemeID", 0}}));
  }
  RebateRuleMgr manager;
  for (auto _ : state) Require(manager.SaveRebateRule(account.dsn(), 2041, rows, 0, 0), "the rule save");
}

void WriteRulesByHand(benchmark::State& state) {
  const BenchAccount account;
  PlainDatabase database(account.path());
  PlainStatement clear(database, "DELETE FROM t_FL_RebateRule WHERE FClassTypeID = ?");
  PlainStatement insert(database,
                        "INSERT INTO t_FL_RebateRule(FClassTypeID,FItemID,FOrgID,FAmtRangeID,FRebateRate,FIndex,"
                        "FSchemeID) VALUES(?,?,?,?,?,?,?)");
  for (auto _ : state) {
    database.Run("BEGIN IMMEDIATE");
    clear.Run(2041);
    for (int i = 0; i < state.range(0); ++i) insert.Run(2041, "71", i, i % kBands + 1, 2.5, i % kBands + 1, 0);
    database.Run("COMMIT");
  }
}

void LoadGrid(benchmark::State& state) {
  const BenchAccount account;
  RegisterLoginStandIns();
  RegisterComponent();
  {
    PlainDatabase database(account.path());
    database.Run("BEGIN");
    PlainStatement entity(database, "INSERT INTO t_Supplier (FItemID,FNumber,FName,FDeleted) VALUES (?,?,?,0)");
    PlainStatement selected(database,
                            "INSERT INTO t_ItemSelect (FClassTypeID,FItemID,FOrgID,FStatus) VALUES (2040,?,0,1)");
    PlainStatement rule(database,
                        "INSERT INTO t_FL_RebateRule (FClassTypeID,FItemID,FOrgID,FAmtRangeID,FRebateRate) VALUES "
                        "(2040,'0',?,?,2.5)");
    for (int i = 1; i <= state.range(0); ++i) {
      entity.Run(i, ("S" + std::to_string(i)).c_str(), "A supplier");
      selected.Run(i);
      for (int band = 1; band <= kBands; ++band) rule.Run(i, band);
    }
    database.Run("COMMIT");
  }
  RebateRuleMgr manager;
  for (auto _ : state) {
    const Ref<Vector> lines = manager.GetRebateRule(account.dsn(), 2040, 0, 1);
    Require(lines && lines->Size() == state.range(0) * kBands, "the grid");
  }
  state.SetComplexityN(state.range(0));
}

BENCHMARK(SaveRules)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(WriteRulesByHand)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(LoadGrid)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);

}  // namespace
}  // namespace rebate::bench
