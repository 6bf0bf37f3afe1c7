#include "scheme/save_request.h"

#include "scheme/conflict.h"
#include "scheme/persistence.h"
#include "service/base_info_mgr.h"

namespace rebate {
namespace {

SaveRequest ReadRequest(const Dictionary& type, const Dictionary& head, const Ref<Vector>& ranges,
                        const Ref<Vector>& organisations, const Ref<Vector>& grid_rows) {
  const Variant zero(Long{0});
  return {.rebate_type = ToText(type.GetValue("FRebateType", zero)),
          .range_item_class = ToLong(type.GetValue("FRangeItemClass", zero)),
          .scheme_id = ToLong(head.GetValue("FSchemeID", zero)),
          .name = ToText(head.GetValue("FSchemeName", zero)),
          .note = ToText(head.GetValue("FNote", zero)),
          .ranges = ranges,
          .organisations = organisations,
          .grid_rows = grid_rows};
}

}  // namespace

bool StandsInEveryGridRow(const Dictionary& organisation) {
  return EqualsNumber(organisation.Value("FRowID"), 0);
}

Ref<Dictionary> BaseInfoMgr::SaveOneSchemeData(const Text& sDsn, Ref<Dictionary>& SchemeConst,
                                               Ref<Dictionary>& SchemeMainData, Ref<Vector>& AllRangesData,
                                               Ref<Vector>& AllOrgsData, Ref<Vector>& AllGridRows) {
  return frame_.Run<Ref<Dictionary>>(sDsn, OnFailure::ReportInResult, [&](Call& call, Ref<Dictionary>& answer) {
    answer = New<Dictionary>();
    const SaveRequest request = ReadRequest(*SchemeConst, *SchemeMainData, AllRangesData, AllOrgsData, AllGridRows);
    if (FindConflicts(call, request, *answer)) {
      call.Abort();
      return;
    }
    PersistScheme(call, request);
    call.Complete();
    answer->SetValue("OK", true);
  });
}

}  // namespace rebate
