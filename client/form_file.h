#pragma once

#include <vector>

#include "client/shape_check.h"

namespace rebate {

// What may stand in a form, key by key; `rebate form save --keys` prints it. Not both of a row's FItemID and FOrgID may
// be left out.
std::span<const KeyRule> FormKeys();

// What is wrong with the shape of a form (see ShapeCheck).
std::vector<Text> FormProblems(const Json& form);

}  // namespace rebate
