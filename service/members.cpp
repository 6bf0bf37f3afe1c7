#include "platform/automation/dispatch.h"
#include "service/base_info_mgr.h"
#include "service/rebate_rule_mgr.h"

namespace rebate {
namespace {

constexpr Long kTransactionMode = 2;

}  // namespace

// Both tables stand in interface order.

const MemberTable& BaseInfoMgr::Members() const {
  using dispatch::Method;
  using dispatch::Property;
  static const MemberTable members{
      Method("DeleteItemNotInRule", &BaseInfoMgr::DeleteItemNotInRule, {"sDsn", "lType", "bGoods"}),
      Method("GetRebateRange", &BaseInfoMgr::GetRebateRange, {"sDsn", "lType"}),
      Method("SaveRebateRange", &BaseInfoMgr::SaveRebateRange, {"sDsn", "lType", "vecData", "[SchemeID]"}),
      Method("GetItemInfo", &BaseInfoMgr::GetItemInfo, {"lType", "lStatus", "sDsn", "UserID"}),
      Method("SaveSelectedItem", &BaseInfoMgr::SaveSelectedItem, {"sDsn", "dicData", "lType", "lUserID", "[lOrgID]"}),
      Method("LoadRebateTypeData", &BaseInfoMgr::LoadRebateTypeData, {"sDsn", "lRebateClass"}),
      Method("LoadSchemeRowData", &BaseInfoMgr::LoadSchemeRowData, {"sDsn", "lSchemeID", "dctSchemeData"}),
      Method("LoadSchemeListData", &BaseInfoMgr::LoadSchemeListData, {"sDsn", "dct"}),
      Method("CheckEnableScheme", &BaseInfoMgr::CheckEnableScheme, {"sDsn", "lSchemeID", "Enabled", "msg"}),
      Method("EnableScheme", &BaseInfoMgr::EnableScheme, {"sDsn", "FSchemeID", "Enabled"}),
      Method("SaveOneSchemeData", &BaseInfoMgr::SaveOneSchemeData,
             {"sDsn", "SchemeConst", "SchemeMainData", "AllRangesData", "AllOrgsData", "AllGridRows"}),
      Method("SaveSchemeData", &BaseInfoMgr::SaveSchemeData,
             {"sDsn", "SchemeID", "SchemeName", "lRebateType", "lRebateMode", "sOrg", "vecRangeData", "vecSchemeData",
              "Note"}),
      Method("ViewSchemeData", &BaseInfoMgr::ViewSchemeData,
             {"sDsn", "SchemeID", "SchemeName", "lRebateType", "lRebateMode", "sOrg", "vecRangeData", "vecSchemeData",
              "Note"}),
      Method("DelSchemeData", &BaseInfoMgr::DelSchemeData, {"sDsn", "strSchemeID"}),
      Method("CheckSchemeData", &BaseInfoMgr::CheckSchemeData,
             {"sDsn", "SchemeID", "lRebateType", "lRebateMode", "lOrg", "ItemID"}),
      Property("TransMode", &BaseInfoMgr::TransMode),
      Method("UpdateBatch", &BaseInfoMgr::UpdateBatch, {"sDsn", "SQLBatch"}),
      Method("ExistsSchemeName", &BaseInfoMgr::ExistsSchemeName, {"sDsn", "lSchemeID", "strSchemeName"}),
      Method("CheckSchemeAllowDel", &BaseInfoMgr::CheckSchemeAllowDel, {"sDsn", "strSchemeID"}),
  };
  return members;
}

const MemberTable& RebateRuleMgr::Members() const {
  using dispatch::Method;
  using dispatch::Property;
  static const MemberTable members{
      Method("SaveAllRule", &RebateRuleMgr::SaveAllRule, {"sDsn", "lType", "vecData"}),
      Method("SaveRebateRule", &RebateRuleMgr::SaveRebateRule, {"sDsn", "lType", "vecData", "lOrgID", "[lUserID]"}),
      Method("GetRebateRangeIndex", &RebateRuleMgr::GetRebateRangeIndex, {"sDsn", "RangeIndex", "lType"}),
      Method("GetRebateRuleByItem", &RebateRuleMgr::GetRebateRuleByItem,
             {"sDsn", "lType", "lOrgID", "UserID", "lItemID"}),
      Method("GetRangeID", &RebateRuleMgr::GetRangeID, {"sDsn", "lType"}),
      Method("GetRebateRule", &RebateRuleMgr::GetRebateRule, {"sDsn", "lType", "lOrgID", "UserID"}),
      Property("TransMode", &RebateRuleMgr::TransMode),
      Method("GetForbidSchemeList", &RebateRuleMgr::GetForbidSchemeList, {"sDsn", "nRebateClassType"}),
      Method("UnForbidSchemeList", &RebateRuleMgr::UnForbidSchemeList, {"sDsn", "strSchemeList"}),
  };
  return members;
}

Long BaseInfoMgr::TransMode() {
  return kTransactionMode;
}

Long RebateRuleMgr::TransMode() {
  return kTransactionMode;
}

}  // namespace rebate
