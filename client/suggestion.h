#pragma once

#include <vector>

#include "platform/values/types.h"

namespace rebate {

// The one of `names` that was most likely meant by `typed`, by the letters that differ or are missing, or by its start;
// empty where none is near.
Text Nearest(std::string_view typed, const std::vector<Text>& names);

// `; did you mean NAME?` for the nearest name, nothing where none is near.
Text DidYouMean(std::string_view typed, const std::vector<Text>& names);

}  // namespace rebate
