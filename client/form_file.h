#pragma once

#include <vector>

#include "calls/json_text.h"

namespace rebate {

// What is wrong with the shape of a form (see ShapeCheck). A form is an object with
//   SchemeName, lRebateType, lRebateMode, [SchemeID], [sOrg], [Note]
//   vecRangeData    [{FLower, FUpper}], at least one
//   vecSchemeData   [{[FItemID], [FOrgID], FRebateCount, FRebateRate, [FUnitID], [FCheckItemID]}], at least one
// in which FRebateCount is the position of a range and sOrg, FItemID and FCheckItemID are lists of ids. Keys in
// brackets may be left out, but not both of FItemID and FOrgID.
std::vector<Text> FormProblems(const Json& form);

}  // namespace rebate
