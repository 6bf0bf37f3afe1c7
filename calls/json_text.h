#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// JSON whose objects keep the order of their keys.
using Json = nlohmann::ordered_json;

// The JSON value that `text` is. Raises 5, saying where, for a text that is no JSON or is nested deeper than 200
// levels, and 6 for an integer that 64 bits don't hold.
Json ParseJson(std::string_view text);

// `value` on one line. Bytes that are no UTF-8 are replaced by U+FFFD.
Text JsonLine(const Json& value);

}  // namespace rebate
