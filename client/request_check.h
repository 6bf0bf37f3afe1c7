#pragma once

#include <vector>

#include "calls/json_text.h"

namespace rebate {

// What is wrong with the shape of a save request (see ShapeCheck). A request is an object with
//   SchemeConst      the row of the rebate type; or FRebateType alone, the type's code
//   SchemeMainData   {FSchemeName, [FSchemeID], [FNote], [FCheckerID]}
//   AllRangesData    [{FLowerLimit, FUpperLimit}]
//   AllOrgsData      [{FRowID, FItemClassID, FItemID, FShowName, [CheckPoints]}]
//   AllGridRows      [{[FItemIDs], [FCheckItems], [FRebateRates], [FZH]}]
// in which FItemIDs holds {FRowID, FItemID, FUnitID, FShowName}, FCheckItems {FRowID, FItemClassID, FItemID} and
// FRebateRates {FRowID, FRebateRate, FIndex}. Keys in brackets may be left out. An id is an integer, an amount a
// number, and either may be a text that reads as one.
std::vector<Text> RequestProblems(const Json& request);

}  // namespace rebate
