#pragma once

#include <vector>

#include "calls/json_text.h"

namespace rebate {

class Account;

// An amount range of a rebate type; the limits are decimals as text.
struct AmountRange {
  Long id = 0;
  Long position = 0;
  Text lower;
  Text upper;
};

// The ranges of a type's rate grid, or those of a scheme, by lower limit. Raises the reason where they can't be read.
std::vector<AmountRange> RangesOfType(Account& account, Long rebate_type, Long scheme = 0);

// What becomes of rates when ranges are replaced.
struct RangeChange {
  std::vector<std::pair<AmountRange, AmountRange>>
      moved;      // rates of a range that goes stand in the new one from then on
  Long lost = 0;  // rates that are 0 from then on, their range being gone
};

// Replaces the ranges, plain rows {FLower, FUpper, FIndex}. Rates follow the range of the same limits; where that goes,
// the new range at its position takes them, unless that is one that stays; else they are 0. Raises the reason where the
// ranges can't be stored.
RangeChange ReplaceRanges(Account& account, Long rebate_type, Long scheme, const Json& ranges);

}  // namespace rebate
