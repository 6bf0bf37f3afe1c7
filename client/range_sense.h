#pragma once

#include <set>
#include <utility>

#include "calls/json_text.h"
#include "client/findings.h"

namespace rebate {

class Dictionary;

// Looks through the amount ranges of a file, rows of right shape at `place` whose limits stand under the two keys.
// Refuses none at all, negative and upside-down ranges and those that overlap; tells gaps and disorder.
void CheckRanges(const Json& ranges, const Text& place, const char* lower, const char* upper, Findings& findings);

// Refuses a rate that the type can't mean: below zero, or above a hundred per cent.
void CheckRate(const Json& rate, const Dictionary& type, const Text& place, Findings& findings);

// Counts rates by line and range, which both are texts as people know them.
class RateCoverage {
 public:
  RateCoverage(std::size_t ranges, Findings& findings) : ranges_(ranges), findings_(findings) {}

  // A rate of a line, in the range at the position, counted from 1. Refuses a second one, and a range that isn't there.
  void Add(const Text& line, Long range, const Text& place);
  // Tells the ranges in which a line has no rate.
  void TellGaps(const Text& line, const Text& place);

 private:
  std::size_t ranges_;
  Findings& findings_;
  std::set<std::pair<Text, Long>> seen_;
};

// The number that an amount of right shape is.
double AmountOf(const Json& amount);

}  // namespace rebate
