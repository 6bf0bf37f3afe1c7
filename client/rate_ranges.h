#pragma once

#include "platform/containers/vector.h"

namespace rebate {

class Account;

// The amount ranges of a rebate type as rows (FID, FLowerLimit, FUpperLimit), by lower limit. Raises the reason where
// they can't be read.
Ref<Vector> RangesOfType(Account& account, Long rebate_type);

// The id of the range that stands at a position. Raises 5 where the type has none there, or more than one.
Long RangeAt(Account& account, Long rebate_type, Long position);

}  // namespace rebate
