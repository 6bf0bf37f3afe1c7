// The list of all schemes of a class, against stepping the same statement in plain SQLite.

#include <malloc.h>

#include "bench/comparison.h"
#include "bench/stored_schemes.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {
namespace {

constexpr int kOrganisations = 3;

void SchemeList(benchmark::State& state) {
  const BenchAccount& account = StoredSchemes(static_cast<int>(state.range(0)), kOrganisations);
  Ref<Dictionary> filter = Row({{"RebateClassType", 24}});
  BaseInfoMgr manager;
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
  std::size_t bytes = 0;
  Require(static_cast<bool>(manager.LoadSchemeListData(account.dsn(), filter)), "the first list");
  Comparison comparison(state);
  for (auto _ : state) {
    Ref<Vector> schemes;
    const std::size_t before = mallinfo2().uordblks;
    comparison.Work([&] { schemes = manager.LoadSchemeListData(account.dsn(), filter); });
    bytes = mallinfo2().uordblks - before;
    Require(schemes && schemes->Size() == state.range(0), "the list");
    comparison.Floor([&] {
      std::int64_t rows = 0;
      while (list.Step()) ++rows;
      list.Reset();
      Require(rows == state.range(0) * kOrganisations, "the plain list");
    });
  }
  state.counters["bytes_per_scheme"] = static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

BENCHMARK(SchemeList)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
