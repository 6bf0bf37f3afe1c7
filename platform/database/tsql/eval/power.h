#pragma once

#include <cstdint>
#include <optional>

#include "platform/values/decimal.h"

namespace rebate::tsql {

// `base` to the power `exponent`, exactly, then rounded half away from zero to `scale` digits behind the point. Nothing
// where the result has more than 38 digits. 0 has no negative power: who calls sees to that.
std::optional<Decimal> Power(const Decimal& base, std::int64_t exponent, int scale);

}  // namespace rebate::tsql
