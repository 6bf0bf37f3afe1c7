#pragma once

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "service/call_frame.h"

namespace rebate {

// Keeps the rules in the cells of a rate grid, and the forbidden schemes. `sDsn` names the data source. No operation
// lets an error reach its caller: a failure is answered by False, 0, the null reference or the empty text.
class RebateRuleMgr : public Object {
 public:
  static constexpr std::string_view kClassName = "RebateRuleMgr";

  // Replaces all rules of a type by the rows of `vecData` (column name to value), each taken once for every live
  // supplier (type 2040) or customer (any other) that isn't selected for the type.
  bool SaveAllRule(const Text& sDsn, Long& lType, Ref<Vector>& vecData);

  // Replaces the rules of a type by the rows of `vecData` (column name to value): those of organisation `lOrgID`, or,
  // where it isn't above 0, of every organisation that user `lUserID` may see.
  bool SaveRebateRule(const Text& sDsn, Long lType, Ref<Vector>& vecData, Long lOrgID, Long lUserID);

  // The position of the range with the id `RangeIndex` in the grid of a type; 0 where there is none.
  Long GetRebateRangeIndex(const Text& sDsn, Long RangeIndex, Long lType);

  // The rates of one organisation and one goods item by the text of their range id; null where there are none.
  Ref<Dictionary> GetRebateRuleByItem(const Text& sDsn, Long lType, Long lOrgID, Long UserID, Long lItemID);

  // The range ids of a type by lower limit, each with a comma on both sides; "," where there are none.
  Text GetRangeID(const Text& sDsn, Long lType);

  // The grid of a type: a row per selected entity and rule, by number; null where there are none.
  Ref<Vector> GetRebateRule(const Text& sDsn, Long lType, Long lOrgID, Long UserID);

  // The transaction mode that the component asks for: 2, always.
  Long TransMode();

  // The disabled schemes of a class, a row per scheme and organisation, as a live recordset on its first row; null
  // where there are none.
  ObjectRef GetForbidSchemeList(const Text& sDsn, Long nRebateClassType);

  // Enables the schemes of a comma-separated list of ids and leaves all others alone.
  bool UnForbidSchemeList(const Text& sDsn, const Text& strSchemeList);

  const MemberTable& Members() const override;

 private:
  CallFrame frame_;
};

}  // namespace rebate
