// The overlap check against a growing account.

#include <benchmark/benchmark.h>

#include "bench/stored_schemes.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {
namespace {

// A request of 100 organisations that no stored scheme holds; it stops short of writing at a range item class that is
// none, or goes through the check and is then refused by its head, which has no type.
void OverlapCheck(benchmark::State& state) {
  const BenchAccount& account = StoredSchemes(static_cast<int>(state.range(0)), 10);
  Ref<Dictionary> type = Row({{"FRebateType", 2040}, {"FRangeItemClass", 8}});
  Ref<Dictionary> head = Row({{"FSchemeID", 0}, {"FSchemeName", Text(5000, 'x')}, {"FNote", ""}});
  Ref<Vector> none = New<Vector>();
  Ref<Vector> organisations = New<Vector>();
  for (int i = 1; i <= 100; ++i) {
    organisations->Add(Row({{"FRowID", 1}, {"FItemClassID", 8}, {"FItemID", 500000 + i}, {"FShowName", ""}}));
  }
  BaseInfoMgr manager;
  for (auto _ : state) {
    const Ref<Dictionary> answer = manager.SaveOneSchemeData(account.dsn(), type, head, none, organisations, none);
    Require(!answer->Has("Repeat") && ToText(answer->Value("Err")).find("truncated") != Text::npos,
            "the overlap check");
  }
}

BENCHMARK(OverlapCheck)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rebate::bench
