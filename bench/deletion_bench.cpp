// Deleting schemes, and enabling disabled ones again, so many ids in one call, beside the same by hand: a prepared
// statement for each table, run for each id, in one transaction.

#include "bench/comparison.h"
#include "bench/stored_schemes.h"
#include "service/base_info_mgr.h"
#include "service/rebate_rule_mgr.h"

namespace rebate::bench {
namespace {

constexpr int kMostTurns = 5;

Text Ids(int first, int count) {
  Text ids;
  for (int i = 0; i < count; ++i) ids += (i > 0 ? "," : "") + std::to_string(first + i);
  return ids;
}

// A turn of the work takes the next so many schemes, and so does one of the floor.
class Turns {
 public:
  explicit Turns(int schemes) : schemes_(schemes) {}
  int Next() { return 1 + schemes_ * taken_++; }

 private:
  int schemes_;
  int taken_ = 0;
};

StoredShape ShapeOf(int schemes) {
  return {.schemes = schemes * kMostTurns * 2, .organisations = 2, .suppliers = 10'000, .goods = 3, .rates = 1};
}

void DeleteSchemes(benchmark::State& state) {
  const int schemes = static_cast<int>(state.range(0));
  const BenchAccount account;
  StoreSchemes(account, ShapeOf(schemes));
  BaseInfoMgr manager;
  PlainDatabase database(account.path());
  std::vector<std::unique_ptr<PlainStatement>> statements;
  for (const char* table : {"SchemeList", "RebateRange", "RebateRule", "AllItems", "AllOrgs", "CheckItems"}) {
    statements.push_back(
        std::make_unique<PlainStatement>(database, Text("DELETE FROM t_FL_") + table + " WHERE FSchemeID=?"));
  }
  Turns turns(schemes);
  Comparison comparison(state);
  for (auto _ : state) {
    const Text ids = Ids(turns.Next(), schemes);
    comparison.Work([&] { Require(manager.DelSchemeData(account.dsn(), ids), "deleting schemes"); });
    const int first = turns.Next();
    comparison.Floor([&] {
      database.Run("BEGIN IMMEDIATE");
      for (const auto& statement : statements) {
        for (int i = 0; i < schemes; ++i) statement->Run(first + i);
      }
      database.Run("COMMIT");
    });
  }
  PlainStatement left(database, "SELECT count(*) FROM t_FL_AllItems");
  left.Step();
  Require(sqlite3_column_int(left.get(), 0) == ShapeOf(schemes).schemes * 3 - (turns.Next() - 1) * 3, "the deletion");
}

void RestoreSchemes(benchmark::State& state) {
  const int schemes = static_cast<int>(state.range(0));
  const BenchAccount account;
  StoreSchemes(account, ShapeOf(schemes));
  RebateRuleMgr manager;
  PlainDatabase database(account.path());
  database.Run("UPDATE t_FL_SchemeList SET FEnable=0");
  PlainStatement enable(database, "UPDATE t_FL_SchemeList SET FEnable=1 WHERE FSchemeID=? AND coalesce(FEnable,0)<>1");
  Turns turns(schemes);
  Comparison comparison(state);
  for (auto _ : state) {
    const Text ids = Ids(turns.Next(), schemes);
    comparison.Work([&] { Require(manager.UnForbidSchemeList(account.dsn(), ids), "enabling schemes"); });
    const int first = turns.Next();
    comparison.Floor([&] {
      database.Run("BEGIN IMMEDIATE");
      for (int i = 0; i < schemes; ++i) enable.Run(first + i);
      database.Run("COMMIT");
    });
  }
  PlainStatement enabled(database, "SELECT count(*) FROM t_FL_SchemeList WHERE FEnable=1");
  enabled.Step();
  Require(sqlite3_column_int(enabled.get(), 0) == turns.Next() - 1, "the enabling");
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10'000)->Arg(100'000);
  benchmark->Iterations(kMostTurns)->Unit(benchmark::kMillisecond)->UseManualTime();
}

BENCHMARK(DeleteSchemes)->Apply(Sizes);
BENCHMARK(RestoreSchemes)->Apply(Sizes);

}  // namespace
}  // namespace rebate::bench
