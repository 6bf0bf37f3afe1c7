#pragma once

#include <string_view>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// The parts of a list with commas, blanks or both between them: `S001, S002` and `S001 S002` alike. An empty part
// between two commas is kept; a text of blanks has none.
std::vector<Text> ListParts(std::string_view list);

}  // namespace rebate
