// Writing a rate grid as one batch against the same rows through prepared statements, and reading what a grid and a
// scheme hold against stepping the same statements in plain SQLite.

#include <vector>

#include "bench/bench_account.h"
#include "bench/comparison.h"
#include "platform/login/process_cache.h"
#include "platform/login_standins/host_cache.h"
#include "platform/login_standins/login_standins.h"
#include "service/base_info_mgr.h"
#include "service/component_classes.h"
#include "service/rebate_rule_mgr.h"

namespace rebate::bench {
namespace {

constexpr int kBands = 10;

void SaveRules(benchmark::State& state) {
  const BenchAccount account;
  const BenchAccount floor_account;
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
  PlainDatabase database(floor_account.path());
  PlainStatement clear(database, "DELETE FROM t_FL_RebateRule WHERE FClassTypeID = ?");
  PlainStatement insert(database,
                        "INSERT INTO t_FL_RebateRule(FClassTypeID,FItemID,FOrgID,FAmtRangeID,FRebateRate,FIndex,"
                        "FSchemeID) VALUES(?,?,?,?,?,?,?)");
  Comparison comparison(state);
  for (auto _ : state) {
    comparison.Work([&] { Require(manager.SaveRebateRule(account.dsn(), 2041, rows, 0, 0), "the rule save"); });
    comparison.Floor([&] {
      database.Run("BEGIN IMMEDIATE");
      clear.Run(2041);
      for (int i = 0; i < state.range(0); ++i) insert.Run(2041, "71", i, i % kBands + 1, 2.5, i % kBands + 1, 0);
      database.Run("COMMIT");
    });
  }
}

std::int64_t CountRows(PlainStatement& statement) {
  std::int64_t rows = 0;
  while (statement.Step()) ++rows;
  statement.Reset();
  return rows;
}

// Suppliers that are all selected, with a rate in each band, and a scheme with so many grid rows.
class GridAccount {
 public:
  explicit GridAccount(int size) {
    PlainDatabase database(account_.path());
    database.Run("BEGIN");
    PlainStatement entity(database, "INSERT INTO t_Supplier (FItemID,FNumber,FName,FDeleted) VALUES (?,?,?,0)");
    PlainStatement selected(database,
                            "INSERT INTO t_ItemSelect (FClassTypeID,FItemID,FOrgID,FStatus) VALUES (2040,?,0,1)");
    PlainStatement rule(database,
                        "INSERT INTO t_FL_RebateRule (FClassTypeID,FItemID,FOrgID,FAmtRangeID,FRebateRate) VALUES "
                        "(2040,'0',?,?,2.5)");
    PlainStatement item(database, "INSERT INTO t_ICItem (FItemID,FNumber,FName,FModel) VALUES (?,?,?,'A model')");
    PlainStatement organisation(
        database,
        "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) VALUES (1,?,8,1,'organisation')");
    PlainStatement goods(
        database, "INSERT INTO t_FL_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName) VALUES (1,?,?,1,'goods')");
    PlainStatement rate(database,
                        "INSERT INTO t_FL_RebateRule (FSchemeID,FRowID,FItemID,FOrgID,FRebateRate,FIndex) VALUES "
                        "(1,?,'1',0,2.5,1)");
    database.Run(
        "INSERT INTO t_FL_SchemeList (FSchemeNo,FSchemeName,FRebateType,FModifyDate,FCheckerID,FNote,FEnable) VALUES "
        "('0','bench',2041,'2026-01-01 00:00:00.000',1,'note',1)");
    for (int i = 1; i <= size; ++i) {
      const Text number = std::to_string(i);
      entity.Run(i, ("S" + number).c_str(), "A supplier");
      selected.Run(i);
      for (int band = 1; band <= kBands; ++band) rule.Run(i, band);
      item.Run(1000 + i, ("G" + number).c_str(), ("Goods " + number).c_str());
      organisation.Run(i);
      goods.Run(i, 1000 + i);
      rate.Run(i);
    }
    database.Run("COMMIT");
  }
  Text dsn() const { return account_.dsn(); }
  const std::filesystem::path& path() const { return account_.path(); }

 private:
  BenchAccount account_;
};

void LoadGrid(benchmark::State& state) {
  RegisterLoginStandIns();
  RegisterComponent();
  const GridAccount account(static_cast<int>(state.range(0)));
  RebateRuleMgr manager;
  const PlainDatabase database(account.path());
  PlainStatement plain(database,
                       "Select a.FItemID,b.FNumber,b.FName,c.FOrgID,c.FAmtRangeID,c.FRebateRate from t_ItemSelect a "
                       "Inner Join t_Supplier b on a.FItemID=b.FItemID Left Join t_FL_RebateRule c on "
                       "a.FItemID=c.FOrgID and a.FClassTypeID=c.FClassTypeID Where a.FClassTypeID=2040 And "
                       "IfNull(c.FItemID,'0')='0' Order By b.FNumber");
  Comparison comparison(state);
  for (auto _ : state) {
    Ref<Vector> lines;
    comparison.Work([&] { lines = manager.GetRebateRule(account.dsn(), 2040, 0, 1); });
    Require(lines && lines->Size() == state.range(0) * kBands, "the grid");
    comparison.Floor([&] { Require(CountRows(plain) == state.range(0) * kBands, "the plain grid"); });
  }
}

void LoadEntities(benchmark::State& state) {
  RegisterLoginStandIns();
  RegisterComponent();
  const GridAccount account(static_cast<int>(state.range(0)));
  BaseInfoMgr manager;
  const PlainDatabase database(account.path());
  PlainStatement plain(database,
                       "Select a.FItemID,a.FNumber,a.FName from t_Supplier a Inner Join t_ItemSelect b on "
                       "a.FItemID=b.FItemID where b.FClassTypeID=2040 And a.FDeleted=0 order by a.FNumber");
  Comparison comparison(state);
  for (auto _ : state) {
    Ref<Vector> entities;
    comparison.Work([&] { entities = manager.GetItemInfo(2040, 1, account.dsn(), 1); });
    Require(entities && entities->Size() == state.range(0), "the entities");
    comparison.Floor([&] { Require(CountRows(plain) == state.range(0), "the plain entities"); });
  }
}

void LoadScheme(benchmark::State& state) {
  RegisterLoginStandIns();
  RegisterComponent();
  const GridAccount account(static_cast<int>(state.range(0)));
  BaseInfoMgr manager;
  const PlainDatabase database(account.path());
  PlainStatement organisations(
      database,
      "SELECT o.*,IFNULL(i.FNumber,''),IFNULL(i.FName,'') FROM t_FL_AllOrgs o LEFT JOIN t_Item i ON "
      "i.FItemClassID=o.FItemClassID AND i.FItemID=o.FItemID WHERE FSchemeID=1 ORDER BY o.FRowID,i.FNumber");
  PlainStatement rules(database,
                       "SELECT FID,FSchemeID,FRowID,FIndex,FRebateRate FROM t_FL_RebateRule WHERE FSchemeID=1 ORDER BY "
                       "FRowID,FIndex");
  PlainStatement rows(database, "SELECT FRowID FROM t_FL_RebateRule WHERE FSchemeID=1 GROUP BY FRowID ORDER BY FRowID");
  PlainStatement goods(
      database,
      "SELECT a.*,i.FNumber,i.FName,i.FModel,(SELECT u.FNumber FROM t_ItemUnit p JOIN t_MeasureUnit u ON "
      "u.FItemID=p.FItemID WHERE p.FSrcItemId=a.FItemID AND p.FItemID=a.FUnitID),(SELECT u.FName FROM t_ItemUnit p "
      "JOIN "
      "t_MeasureUnit u ON u.FItemID=p.FItemID WHERE p.FSrcItemId=a.FItemID AND p.FItemID=a.FUnitID) FROM t_FL_AllItems "
      "a LEFT JOIN t_ICItem i ON a.FItemID=i.FItemID WHERE FSchemeID=1 ORDER BY a.FRowID,i.FNumber");
  Comparison comparison(state);
  for (auto _ : state) {
    Ref<Dictionary> scheme;
    comparison.Work([&] { Require(manager.LoadSchemeRowData(account.dsn(), 1, scheme), "the scheme"); });
    comparison.Floor([&] {
      for (PlainStatement* each : {&organisations, &rules, &rows, &goods}) {
        Require(CountRows(*each) == state.range(0), "the plain scheme");
      }
    });
  }
}

BENCHMARK(SaveRules)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(LoadGrid)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(LoadEntities)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(LoadScheme)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
