#include "model/rebate_type.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

RecordsetRef ExecuteForRows(Call& call, std::string_view source, const Text& query) {
  RecordsetRef rows = call.Execute(query);
  if (rows->Eof()) Refuse(source, "No row");
  return rows;
}

Text FormHeadQuery(Long scheme_id) {
  return Statement(
      "select FSchemeName,'' as FRebateMode,'' as FRebateCor,FRebateType,FNote from t_FL_SchemeList where FSchemeID={}",
      scheme_id);
}

Text BandsQuery(Long scheme_id) {
  return Statement(
      "select FLowerLimit as FLower,FUpperLimit as FUpper from t_FL_RebateRange where FSchemeID={} order by FID asc",
      scheme_id);
}

// One row per organisation and band of a total type, per item and band of any other.
Text FormRulesQuery(Long scheme_id, Long rebate_type) {
  return Statement(
      "select  distinct {},a.FRebateRate,b.FIndex as FRebateCount,a.FUnitID,a.FCheckItemID from t_FL_RebateRule a "
      "inner join t_FL_RebateRange b on a.FClassTypeID=b.FClassTypeID and a.FSchemeID=b.FSchemeID and "
      "a.FAmtRangeID=b.FID where a.FSchemeID={}",
      rebate_type::IsFormTotal(rebate_type) ? "0 as FItemID,a.FOrgID" : "a.FItemID,0 as FOrgID", scheme_id);
}

bool IsByItem(Long rebate_mode) {
  return rebate_mode >= 1 && rebate_mode <= 5;
}
bool IsByTotal(Long rebate_mode) {
  return rebate_mode == 6 || rebate_mode == 7;
}

// The codes among which a scheme of this mode and type has its rivals; empty outside both families.
std::string_view FamilyFilter(Long rebate_mode, Long rebate_type) {
  if (rebate_type >= rebate_type::kPurchasesFirst && rebate_type <= rebate_type::kPurchasesLast) {
    return IsByItem(rebate_mode) ? " and FClassTypeID in (2041,2042,2043,2044,2045)"
                                 : " and FClassTypeID in (2040,2046)";
  }
  if (rebate_type >= rebate_type::kSalesFirst && rebate_type <= rebate_type::kSalesLast) {
    return IsByItem(rebate_mode) ? " and FClassTypeID in (3021,3022,3023,3024,3025)"
                                 : " and FClassTypeID in (3020,3026)";
  }
  return "";
}

Text RivalQuery(Long scheme_id, Long rebate_type, Long rebate_mode, Long organisation, const Text& item) {
  const std::string_view family = FamilyFilter(rebate_mode, rebate_type);
  if (IsByItem(rebate_mode)) {
    return Statement(
        "select  FItemID from t_FL_RebateRule where FSchemeID<>{} and ',' + FItemID + ',' like '%,{},%' and "
        "(FOrgID=0 or FOrgID={}) {}",
        scheme_id, item, organisation, family);
  }
  return Statement("select  FItemID from t_FL_RebateRule where FSchemeID<>{} and FItemID=0 and FOrgID='{}'{}",
                   scheme_id, item, family);
}

}  // namespace

bool BaseInfoMgr::ViewSchemeData(const Text& sDsn, Long SchemeID, Text& SchemeName, Long& lRebateType, Long&,
                                 Text& sOrg, Ref<Vector>& vecRangeData, Ref<Vector>& vecSchemeData, Text& Note) {
  constexpr std::string_view kSource = "BaseInfoMgr.ViewSchemeData";
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& done) {
    const RecordsetRef head = ExecuteForRows(call, kSource, FormHeadQuery(SchemeID));
    SchemeName = ToText(head->FieldValue("FSchemeName"));
    lRebateType = ToLong(head->FieldValue("FRebateType"));
    sOrg = ToText(head->FieldValue("FRebateCor"));
    Note = ToText(head->FieldValue("FNote"));
    vecRangeData = RecordsetToVector(ExecuteForRows(call, kSource, BandsQuery(SchemeID)));
    vecSchemeData = RecordsetToVector(ExecuteForRows(call, kSource, FormRulesQuery(SchemeID, lRebateType)));
    call.Complete();
    done = true;
  });
}

bool BaseInfoMgr::ExistsSchemeName(const Text& sDsn, Long lSchemeID, const Text& strSchemeName) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& exists) {
    const RecordsetRef rows =
        call.Execute(Statement("SELECT TOP 1 1  FROM t_FL_SchemeList WHERE FSchemeName ='{}' AND FSchemeID <>{}",
                               DoubleQuotes(strSchemeName), lSchemeID));
    exists = !rows->Eof();
    rows->Close();
    call.Complete();
  });
}

bool BaseInfoMgr::CheckSchemeData(const Text& sDsn, Long SchemeID, Long lRebateType, Long lRebateMode, Long lOrg,
                                  const Text& ItemID) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& found) {
    if (IsByItem(lRebateMode) || IsByTotal(lRebateMode)) {
      ExecuteForRows(call, "BaseInfoMgr.CheckSchemeData", RivalQuery(SchemeID, lRebateType, lRebateMode, lOrg, ItemID));
    }
    call.Complete();
    found = true;
  });
}

}  // namespace rebate
