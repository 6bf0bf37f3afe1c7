#include "client/range_sense.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct Range {
  double lower;
  double upper;
  Text place;
};

void CheckLimits(const Range& range, const char* lower, const char* upper, Findings& findings) {
  if (range.lower < 0) findings.Refuse(range.place + "." + lower, "an amount below zero");
  if (range.upper <= range.lower) {
    findings.Refuse(range.place + "." + upper, "the range ends at " + NumberText(range.upper) + ", not above " +
                                                   NumberText(range.lower) + ", where it begins");
  }
}

}  // namespace

void CheckRanges(const Json& ranges, const Text& place, const char* lower, const char* upper, Findings& findings) {
  if (ranges.empty()) findings.Refuse(place, "there is no range");
  std::vector<Range> sorted;
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    sorted.push_back({AmountOf(ranges[i][lower]), AmountOf(ranges[i][upper]), PlaceOf(place, i)});
    CheckLimits(sorted.back(), lower, upper, findings);
  }
  const auto begins_before = [](const Range& a, const Range& b) { return a.lower < b.lower; };
  if (!std::is_sorted(sorted.begin(), sorted.end(), begins_before)) {
    findings.Tell(place, "the ranges don't stand in ascending order");
    std::stable_sort(sorted.begin(), sorted.end(), begins_before);
  }
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    const Range& before = sorted[i - 1];
    const Range& range = sorted[i];
    if (range.lower < before.upper) {
      findings.Refuse(range.place + "." + lower, NumberText(range.lower) + " lies inside of " + before.place +
                                                     ", which ends at " + NumberText(before.upper));
    } else if (range.lower > before.upper) {
      findings.Tell(range.place + "." + lower,
                    "no range holds the amounts from " + NumberText(before.upper) + " to " + NumberText(range.lower));
    }
  }
}

void CheckRate(const Json& rate, const Dictionary& type, const Text& place, Findings& findings) {
  const double number = AmountOf(rate);
  if (number < 0) findings.Refuse(place, "a rate below zero");
  if (number > 100 && EqualsNumber(type.GetValue("FIsPercent"), 1)) {
    findings.Refuse(place, NumberText(number) + " per cent is more than the whole amount");
  }
}

void RateCoverage::Add(const Text& line, Long range, const Text& place) {
  if (range < 1 || range > static_cast<Long>(ranges_)) {
    findings_.Refuse(place, "there is no range " + std::to_string(range) + "; the file has " + std::to_string(ranges_));
  } else if (!seen_.emplace(line, range).second) {
    findings_.Refuse(place, "a second rate of " + line + " in range " + std::to_string(range));
  }
}

void RateCoverage::TellGaps(const Text& line, const Text& place) {
  for (Long range = 1; range <= static_cast<Long>(ranges_); ++range) {
    if (!seen_.contains({line, range})) findings_.Tell(place, "no rate in range " + std::to_string(range));
  }
}

double AmountOf(const Json& amount) {
  return LeadingNumber(ToText(FromJson(amount, "")));
}

}  // namespace rebate
