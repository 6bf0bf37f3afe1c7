#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

void CheckIdList(const Text& ids) {
  for (const Text& id : Split(ids, ',')) {
    if (!IsNumeric(id)) {
      Refuse("BaseInfoMgr.DelSchemeData", Statement("参数strSchemeID【{}】不是合法的返利方案ID序列", ids));
    }
  }
}

Text DeleteBatch(const Text& ids) {
  return Statement(
      Lines({"DELETE FROM  t_FL_SchemeList WHERE FSchemeID IN ({})",
             "DELETE FROM  t_FL_RebateRange WHERE FSchemeID IN ({})",
             "DELETE FROM  t_FL_RebateRule WHERE FSchemeID IN ({})",
             "DELETE FROM  t_FL_AllItems WHERE FSchemeID IN ({})", "DELETE FROM  t_FL_AllOrgs WHERE FSchemeID IN ({})",
             "DELETE FROM  t_FL_CheckItems WHERE FSchemeID IN ({})"}),
      ids, ids, ids, ids, ids, ids);
}

}  // namespace

bool BaseInfoMgr::DelSchemeData(const Text& sDsn, const Text& strSchemeID) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& done) {
    CheckIdList(strSchemeID);
    call.Execute(DeleteBatch(strSchemeID));
    call.Complete();
    done = true;
  });
}

bool BaseInfoMgr::CheckSchemeAllowDel(const Text& sDsn, const Text& strSchemeID) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& allowed) {
    CheckIdList(strSchemeID);
    allowed = call.Execute(Statement(" select * from t_FL_SchemeLink WHERE FSchemeID IN ({})", strSchemeID))->Eof();
    call.Complete();
  });
}

}  // namespace rebate
