#pragma once

#include <optional>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// An amount that people wrote, as digits alone with a sign and a point where they are due: `100,000` is 100000. Nothing
// for what is no number, for commas anywhere but between thousands, and for exponents.
std::optional<Text> PlainAmount(std::string_view text);

// Whether an account holds all digits of a plain amount: at most 15 that count, ten of them behind the point.
bool IsHeldWhole(std::string_view plain);

}  // namespace rebate
