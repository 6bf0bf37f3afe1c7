#include "model/rebate_type.h"
#include "platform/automation/conversion.h"
#include "service/data_rights.h"
#include "service/rebate_rule_mgr.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

constexpr std::string_view kColumnsPlace = "1=1";

// What the grid query takes from the kind of entity in its lines.
struct EntityTexts {
  Text join;
  std::string_view columns;
  Text condition;
};

EntityTexts TextsOf(Long type, Long organisation) {
  const auto of_organisations = [&](std::string_view join) {
    return EntityTexts{Text(join), "b.FNumber,b.FName", Statement(" And IsNull(c.FItemID,0) = {}", organisation)};
  };
  switch (type) {
    case rebate_type::kPurchaseTotalPercent:
      return of_organisations(
          "Inner Join t_Supplier b on a.FItemID=b.FItemID Left Join t_FL_RebateRule c on a.FItemID=c.FOrgID and "
          "a.FClassTypeID=c.FClassTypeID ");
    case rebate_type::kSalesTotalPercent:
      return of_organisations(
          "Inner Join t_Organization b on a.FItemID=b.FItemID Left Join t_FL_RebateRule c  on a.FItemID=c.FOrgID  and "
          "a.FClassTypeID=c.FClassTypeID ");
    case rebate_type::kSalesmanTotal:
      return of_organisations(
          "Inner Join t_Emp b on a.FItemID=b.FItemID Left Join t_FL_RebateRule c  on a.FItemID=c.FOrgID  and "
          "a.FClassTypeID=c.FClassTypeID ");
    default:
      return {Statement("Inner Join t_ICItem b on a.FItemID=b.FItemID Left Join (Select * from t_FL_RebateRule where "
                        "FOrgID={}) c  on a.FItemID=c.FItemID  and a.FClassTypeID=c.FClassTypeID ",
                        organisation),
              "b.FNumber,b.FName,b.FModel", Statement(" And a.FOrgID={}", organisation)};
  }
}

Text RightsTest(Long user_id) {
  return Statement(" And charindex('{}',b.FRightUserID)>0 ", user_id);
}

Text GridQuery(Long type, Long organisation, Long user_id) {
  EntityTexts texts = TextsOf(type, organisation);
  const std::string_view item_class = rebate_type::RightsClass(type);
  if (!item_class.empty()) {
    const Text classes = AuthrizeItemClassList();
    const bool needed = NeedAuthrize();
    if (needed && classes.find(item_class) != Text::npos) texts.condition += RightsTest(user_id);
  }
  const Text lines =
      "Select a.FItemID,1=1,c.FOrgID,c.FAmtRangeID,c.FRebateRate from t_ItemSelect a " + texts.join + "\r\n";
  return Replace(lines, kColumnsPlace, texts.columns) +
         Statement(" Where  a.FClassTypeID={}{}  Order By b.FNumber ", type, texts.condition);
}

Text ItemQuery(Long type, Long organisation, Long user_id, Long item) {
  Text query = Statement(
      "select a.FOrgID,a.FAmtRangeID,a.FRebateRate from t_FL_RebateRule a Inner Join t_Item b on a.FOrgID=b.FItemID "
      "where a.FClassTypeID={} and a.FOrgID={} And a.FItemID={}",
      type, organisation, item);
  return NeedAuthrize() ? query + RightsTest(user_id) : query;
}

}  // namespace

Ref<Vector> RebateRuleMgr::GetRebateRule(const Text& sDsn, Long lType, Long lOrgID, Long UserID) {
  return frame_.Run<Ref<Vector>>(sDsn, OnFailure::Swallow, [&](Call& call, Ref<Vector>& lines) {
    const RecordsetRef rows = call.Execute(GridQuery(lType, lOrgID, UserID));
    if (!rows->Eof()) lines = RecordsetToVector(rows);
    call.Complete();
  });
}

Ref<Dictionary> RebateRuleMgr::GetRebateRuleByItem(const Text& sDsn, Long lType, Long lOrgID, Long UserID,
                                                   Long lItemID) {
  return frame_.Run<Ref<Dictionary>>(sDsn, OnFailure::Swallow, [&](Call& call, Ref<Dictionary>& rates) {
    const RecordsetRef rows = call.Execute(ItemQuery(lType, lOrgID, UserID, lItemID));
    if (!rows->Eof()) rates = New<Dictionary>();
    for (; !rows->Eof(); rows->MoveNext()) {
      rates->SetValue(ToText(rows->FieldValue("FAmtRangeID")), rows->FieldValue("FRebateRate"));
    }
    call.Complete();
  });
}

}  // namespace rebate
