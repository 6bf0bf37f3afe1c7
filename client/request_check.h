#pragma once

#include <vector>

#include "client/shape_check.h"

namespace rebate {

// What may stand in a save request, key by key; `rebate save --keys` prints it. One of SchemeConst and FRebateType is
// due.
std::span<const KeyRule> RequestKeys();

// What is wrong with the shape of a save request (see ShapeCheck).
std::vector<Text> RequestProblems(const Json& request);

}  // namespace rebate
