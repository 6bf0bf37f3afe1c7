#pragma once

#include "platform/values/types.h"

// The rebate classes that group the rebate types.
namespace rebate::rebate_class {

inline constexpr Long kPurchases = 24;
inline constexpr Long kSales = 32;

}  // namespace rebate::rebate_class
