// The overlap check against a growing account, and the scheme list against the same statement in plain SQLite.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "bench/stored_schemes.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {
namespace {

void SchemeList(benchmark::State& state) {
  const BenchAccount& account = StoredSchemes(static_cast<int>(state.range(0)), 3);
  Ref<Dictionary> filter = Row({{"RebateClassType", 24}});
  BaseInfoMgr manager;
  std::size_t bytes = 0;
  for (auto _ : state) {
    const std::size_t before = mallinfo2().uordblks;
    const Ref<Vector> schemes = manager.LoadSchemeListData(account.dsn(), filter);
    Require(schemes && schemes->Size() == state.range(0), "the list");
    bytes = mallinfo2().uordblks - before;
  }
  state.counters["bytes_per_scheme"] = static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

void PlainList(benchmark::State& state) {
  const BenchAccount& account = StoredSchemes(static_cast<int>(state.range(0)), 3);
  const PlainDatabase database(account.path());
  PlainStatement list(
      database,
      "select a.FSchemeID,a.FSchemeName,a.FModifyDate,a.FNote,a.FRebateType,"
      "CASE WHEN ifnull(a.FEnable,0)=0 THEN '禁用' WHEN ifnull(a.FEnable,0)=1 THEN '启用' END AS FEnable,"
      "b.FTypeName as FRebateMode,c.FName as FCheckerID,'' as FOrg,'' as FOrgDetail,o.FItemID,i.FNumber,"
      "i.FName from t_FL_SchemeList a inner join t_FL_SchemeMode b on a.FRebateType=b.FRebateType "
      "inner join t_User c on a.FCheckerID=c.FUserID left join (SELECT DISTINCT FSchemeID, FItemClassID, "
      "FItemID FROM t_FL_AllOrgs) o on a.FSchemeID=o.FSchemeID LEFT JOIN t_Item i ON "
      "i.FItemClassID=o.FItemClassID AND i.FItemID=o.FItemID where a.FEnable=1 and b.FRebateClass=24 "
      "order by a.FModifyDate DESC,a.FSchemeID,i.FNumber");
  for (auto _ : state) {
    std::int64_t rows = 0;
    while (list.Step()) ++rows;
    list.Reset();
    Require(rows == state.range(0) * 3, "the plain list");
  }
}

BENCHMARK(SchemeList)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainList)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rebate::bench
