// Saving a scheme of so many grid rows (one goods and one rate each, ten ranges, ten organisations that stand in every
// grid row) against the floor: the same final rows written by hand with prepared statements in one transaction.

#include "bench/bench_account.h"
#include "bench/comparison.h"
#include "bench/scheme_to_save.h"

namespace rebate::bench {
namespace {

// The floor's statements and what they write: the rows that a save of the request leaves.
class HandWriter {
 public:
  explicit HandWriter(PlainDatabase& database) : database_(database) {}

  void Write(int rows) {
    database_.Run("BEGIN IMMEDIATE");
    head_.Run("bench", 2041, 1, "note");
    const long long id = sqlite3_last_insert_rowid(database_.get());
    for (int i = 0; i < SchemeToSave::kRanges; ++i) range_.Run(i * 100, i * 100 + 100, i + 1, id);
    for (int k = 1; k <= SchemeToSave::kOrganisations; ++k) {
      for (int i = 1; i <= rows; ++i) organisation_.Run(id, i, 8, k, "organisation");
    }
    for (int i = 1; i <= rows; ++i) {
      goods_.Run(id, i, 1000 + i, 1, "goods");
      rate_.Run(id, i, "1", 2.5, i % SchemeToSave::kRanges + 1);
    }
    database_.Run("COMMIT");
  }
  void Clear() {
    database_.Run("BEGIN IMMEDIATE");
    for (const char* table : {"SchemeList", "RebateRange", "AllOrgs", "AllItems", "RebateRule"}) {
      database_.Run((Text("DELETE FROM t_FL_") + table).c_str());
    }
    database_.Run("COMMIT");
  }

 private:
  PlainDatabase& database_;
  PlainStatement head_{database_,
                       "INSERT INTO t_FL_SchemeList (FSchemeNo,FSchemeName,FRebateType,FModifyDate,FCheckerID,FNote,"
                       "FEnable) VALUES ('0',?,?,'2026-01-01 00:00:00.000',?,?,1)"};
  PlainStatement range_{database_,
                        "INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID) VALUES (?,?,?,?)"};
  PlainStatement organisation_{
      database_, "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) VALUES (?,?,?,?,?)"};
  PlainStatement goods_{database_,
                        "INSERT INTO t_FL_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName) VALUES (?,?,?,?,?)"};
  PlainStatement rate_{
      database_,
      "INSERT INTO t_FL_RebateRule (FSchemeID,FRowID,FItemID,FOrgID,FRebateRate,FIndex) VALUES (?,?,?,0,?,?)"};
};

// Each save's rows are cleared away before the next, so that no overlap stands in the way.
void SaveScheme(benchmark::State& state) {
  const int rows = static_cast<int>(state.range(0));
  const BenchAccount account;
  const BenchAccount floor_account;
  SchemeToSave scheme(rows);
  PlainDatabase database(account.path());
  HandWriter stored(database);
  PlainDatabase floor_database(floor_account.path());
  HandWriter by_hand(floor_database);
  Comparison comparison(state);
  for (auto _ : state) {
    bool saved = false;
    comparison.Work([&] { saved = scheme.Save(account.dsn()); });
    Require(saved, "the save");
    comparison.Floor([&] { by_hand.Write(rows); });
    stored.Clear();
    by_hand.Clear();
  }
}

BENCHMARK(SaveScheme)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
