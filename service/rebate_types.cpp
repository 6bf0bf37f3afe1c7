#include "service/base_info_mgr.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {

Ref<Vector> BaseInfoMgr::LoadRebateTypeData(const Text& sDsn, Long lRebateClass) {
  return frame_.Run<Ref<Vector>>(sDsn, OnFailure::SwallowAndComplete, [&](Call& call, Ref<Vector>& types) {
    const RecordsetRef rows =
        call.Execute(Statement("SELECT * FROM t_FL_SchemeMode WHERE FRebateClass ={} ORDER BY FIndex ", lRebateClass));
    if (!rows->Eof()) types = RecordsetToVector(rows);
    rows->Close();
    call.Complete();
  });
}

}  // namespace rebate
