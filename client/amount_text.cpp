#include "client/amount_text.h"

#include <algorithm>

#include "platform/values/ascii.h"

namespace rebate {
namespace {

bool AreDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The digits of an integer with or without commas between all of its thousands.
std::optional<Text> DigitsOf(std::string_view integer) {
  if (integer.find(',') == std::string_view::npos) {
    if (!AreDigits(integer)) return std::nullopt;
    return Text(integer);
  }
  Text digits;
  for (bool first = true;; first = false) {
    const std::size_t comma = integer.find(',');
    const std::string_view group = integer.substr(0, comma);
    if (!AreDigits(group) || (first ? group.size() > 3 : group.size() != 3)) return std::nullopt;
    digits += group;
    if (comma == std::string_view::npos) return digits;
    integer.remove_prefix(comma + 1);
  }
}

}  // namespace

std::optional<Text> PlainAmount(std::string_view text) {
  text = Trim(text);
  Text plain;
  if (text.starts_with('-')) plain = "-";
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  const std::size_t point = text.find('.');
  const std::optional<Text> digits = DigitsOf(text.substr(0, point));
  if (!digits) return std::nullopt;
  plain += *digits;
  if (point == std::string_view::npos) return plain;
  const std::string_view fraction = text.substr(point + 1);
  if (!AreDigits(fraction)) return std::nullopt;
  return plain + "." + Text(fraction);
}

bool IsHeldWhole(std::string_view plain) {
  constexpr std::size_t kMostDigits = 15;
  constexpr std::size_t kMostBehindPoint = 10;
  if (plain.starts_with('-')) plain.remove_prefix(1);
  const std::size_t point = std::min(plain.find('.'), plain.size());
  std::string_view fraction = plain.substr(std::min(point + 1, plain.size()));
  while (fraction.ends_with('0')) fraction.remove_suffix(1);
  Text digits = Text(plain.substr(0, point)) + Text(fraction);
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
  return digits.size() <= kMostDigits && fraction.size() <= kMostBehindPoint;
}

}  // namespace rebate
