#pragma once

#include <vector>

#include "calls/json_text.h"

namespace rebate {

// What is wrong with the shape of a file of ranges (see ShapeCheck): an array, not empty, of {FLower, FUpper,
// [FIndex]}.
std::vector<Text> RangeFileProblems(const Json& ranges);

// What is wrong with the shape of a file of rates: an array of rows, or {"rows":[…],"rest":true}. A row's keys are
// columns of a rule: FItemID, FOrgID, FAmtRangeID, FRebateRate, FIndex, FNote, FSchemeID, FRowID, FUnitID,
// FCheckItemID and FClassTypeID; each may be left out, but for FRebateRate.
std::vector<Text> RateFileProblems(const Json& rates);

}  // namespace rebate
