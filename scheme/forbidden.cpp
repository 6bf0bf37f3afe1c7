#include "service/rebate_rule_mgr.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

Text ForbiddenQuery(Long rebate_class) {
  return Statement(
      Lines({"Select a.FSchemeID,a.FSchemeName,a.FModifyDate,a.FNote,a.FRebateType,",
             "(Case When IsNull(a.FEnable,0)=0 Then '禁用' When IsNull(a.FEnable,0)=1 Then '启用' End) As FEnable,",
             "b.FTypeName As FRebateMode,c.FName As FCheckerID,'' As FOrg,'' As FOrgDetail,o.FItemID,"
             "IsNull(i.FNumber,'') As FNumber,",
             "(Case When IsNull(o.FItemID,0)=0 Then (Case When o.FItemClassID=1 Then '全部客户' Else '全部供应商' End) "
             "Else i.FName End) As FName",
             "From t_FL_SchemeList a", "Inner Join t_FL_SchemeMode b on a.FRebateType=b.FRebateType",
             "Inner Join t_user c on a.FCheckerID=c.FUserID",
             "Left  Join (Select Distinct FSchemeID,FItemClassID,FItemID From t_FL_AllOrgs) o On "
             "a.FSchemeID=o.FSchemeID",
             "Left  Join t_Item i On i.FItemClassID=o.FItemClassID And i.FItemID=o.FItemID",
             "Where a.FEnable=0 and b.FRebateClass={}", "Order By a.FModifyDate DESC,a.FSchemeID,i.FNumber ", ""}),
      rebate_class);
}

}  // namespace

ObjectRef RebateRuleMgr::GetForbidSchemeList(const Text& sDsn, Long nRebateClassType) {
  return frame_.Run<ObjectRef>(sDsn, OnFailure::SwallowAndComplete, [&](Call& call, ObjectRef& schemes) {
    const RecordsetRef rows = call.Execute(ForbiddenQuery(nRebateClassType));
    if (!rows->Eof()) schemes = rows;
    call.Complete();
  });
}

bool RebateRuleMgr::UnForbidSchemeList(const Text& sDsn, const Text& strSchemeList) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndComplete, [&](Call& call, bool& done) {
    call.Execute(Statement(" UPDATE t_FL_SchemeList SET FEnable =1 WHERE ISNULL(FEnable,0)<>1 AND FSchemeID in ({})",
                           strSchemeList));
    call.Complete();
    done = true;
  });
}

}  // namespace rebate
