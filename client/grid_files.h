#pragma once

#include <vector>

#include "client/shape_check.h"

namespace rebate {

// What may stand in a file of ranges, an array that isn't empty; `rebate ranges --keys` prints it.
std::span<const KeyRule> RangeFileKeys();
// What may stand in a file of rates, an array of rows or {"rows":[…],"rest":true}; `rebate rates --keys` prints it.
std::span<const KeyRule> RateFileKeys();

// What is wrong with the shape of such a file (see ShapeCheck).
std::vector<Text> RangeFileProblems(const Json& ranges);
std::vector<Text> RateFileProblems(const Json& rates);

}  // namespace rebate
