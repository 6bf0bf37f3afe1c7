#include "grid/rights_filter.h"
#include "model/rebate_type.h"
#include "platform/automation/conversion.h"
#include "service/rebate_rule_mgr.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

// Whether a value goes into a statement without quotes.
bool IsBare(const Variant& value) {
  switch (value.type()) {
    case VariantType::Short:
    case VariantType::Long:
    case VariantType::Double:
    case VariantType::Decimal:
      return true;
    default:
      return false;
  }
}

Text SplicedValue(const Variant& value) {
  if (IsBare(value)) return ToText(value);
  // A Null has no text of its own: between quotes it is the empty one.
  return "'" + (value.IsNull() ? Text() : DoubleQuotes(ToText(value))) + "'";
}

// The columns and values that a row names, each followed by a comma.
struct RowLists {
  Text columns;
  Text values;
};

RowLists ListsOf(const Dictionary& row) {
  RowLists lists;
  for (Long i = 1; i <= row.Count(); ++i) {
    const Text& column = row.Key(i);
    lists.columns.append(column).append(",");
    lists.values.append(SplicedValue(row.Value(column))).append(",");
  }
  return lists;
}

Text RuleInsert(const Dictionary& row) {
  RowLists lists = ListsOf(row);
  if (lists.columns.empty()) Refuse("RebateRuleMgr.SaveRebateRule", "A rule without columns");
  lists.columns.pop_back();
  lists.values.pop_back();
  return Statement("Insert into T_FL_RebateRule({}) Values({})\r\n", lists.columns, lists.values);
}

Text RuleInsertForTheRest(const Dictionary& row, Long type) {
  const RowLists lists = ListsOf(row);
  return Statement(
      "Insert into T_FL_RebateRule({}FOrgID)\r\nSelect {}FItemID from (select FItemID from {} a where not "
      "exists(select "
      "FItemID from t_itemselect b where b.FItemID=a.FItemID and b.FClassTypeID={}) and a.FDeleted=0 ) AA\r\n",
      lists.columns, lists.values, type == rebate_type::kPurchaseTotalPercent ? "t_Supplier" : "t_Organization", type);
}

// `head`, a text for each row, and the end of the transaction that the head begins.
template <typename RowText>
Text RuleBatch(Text head, const Ref<Vector>& rows, RowText row_text) {
  const Long count = rows ? rows->Size() : 0;
  for (Long i = 1; i <= count; ++i) head += row_text(*ObjectAs<Dictionary>(rows->Item(i)));
  return head + "Commit tran";
}

}  // namespace

bool RebateRuleMgr::SaveRebateRule(const Text& sDsn, Long lType, Ref<Vector>& vecData, Long lOrgID, Long lUserID) {
  return frame_.Run<bool>(sDsn, OnFailure::Swallow, [&](Call& call, bool& done) {
    const Text filter = RightsFilter("FOrgID", lType, lUserID);
    const Text head =
        lOrgID > 0 ? Statement("begin tran Delete from t_FL_RebateRule Where FClassTypeID = {} and FOrgID={}\r\n",
                               lType, lOrgID)
                   : Statement("begin tran Delete from t_FL_RebateRule Where FClassTypeID = {}{}\r\n", lType, filter);
    call.Execute(RuleBatch(head, vecData, RuleInsert));
    call.Complete();
    done = true;
  });
}

bool RebateRuleMgr::SaveAllRule(const Text& sDsn, Long& lType, Ref<Vector>& vecData) {
  return frame_.Run<bool>(sDsn, OnFailure::Swallow, [&](Call& call, bool& done) {
    const Text head = Statement("begin tran Delete from t_FL_RebateRule Where FClassTypeID = {}\r\n", lType);
    call.Execute(RuleBatch(head, vecData, [&](const Dictionary& row) { return RuleInsertForTheRest(row, lType); }));
    call.Complete();
    done = true;
  });
}

}  // namespace rebate
