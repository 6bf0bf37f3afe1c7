#include "platform/automation/conversion.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>

namespace rebate {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view TrimWhite(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

double ReadDouble(std::string_view digits) {
  double value = 0;
  const auto outcome = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (outcome.ec == std::errc::result_out_of_range) {
    // Too small reads as 0; too large has no value in any type of this world.
    const std::size_t exponent = digits.find_first_of("eE");
    if (exponent != std::string_view::npos && exponent + 1 < digits.size() && digits[exponent + 1] == '-') return 0;
    throw Error(error_number::kOverflow, "", "Overflow");
  }
  return value;
}

// &H1F and &O17: 16-bit values above &H7FFF are negative, as are 32-bit ones above &H7FFFFFFF.
std::optional<double> ParsePrefixed(std::string_view text) {
  const char kind = text.size() > 1 ? Lower(text[1]) : '\0';
  const int base = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
  if (base == 0) return std::nullopt;
  text.remove_prefix(2);
  if (text.ends_with('&')) text.remove_suffix(1);
  std::uint32_t bits = 0;
  const auto outcome = std::from_chars(text.data(), text.data() + text.size(), bits, base);
  if (text.empty() || outcome.ec != std::errc() || outcome.ptr != text.data() + text.size()) return std::nullopt;
  if (bits >= 0x8000 && bits <= 0xFFFF) return static_cast<std::int16_t>(bits);
  return static_cast<std::int32_t>(bits);
}

// The end of the number that `text` starts with, which has no sign any more; 0 where there is none. `commas` says
// whether thousands separators may stand between the integer digits.
std::size_t NumberLength(std::string_view text, bool commas) {
  std::size_t at = 0;
  bool digits = false;
  while (at < text.size() && (IsDigit(text[at]) || (commas && digits && text[at] == ',')))
    digits |= IsDigit(text[at++]);
  if (at < text.size() && text[at] == '.') {
    std::size_t fraction = at + 1;
    while (fraction < text.size() && IsDigit(text[fraction])) ++fraction;
    if (digits || fraction > at + 1) {
      digits = true;
      at = fraction;
    }
  }
  if (!digits) return 0;
  if (at < text.size() && (Lower(text[at]) == 'e' || Lower(text[at]) == 'd')) {
    std::size_t exponent = at + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    if (exponent < text.size() && IsDigit(text[exponent])) {
      while (exponent < text.size() && IsDigit(text[exponent])) ++exponent;
      at = exponent;
    }
  }
  return at;
}

double ReadUnsigned(std::string_view number) {
  Text plain;
  plain.reserve(number.size());
  for (const char c : number) {
    if (c == ',') continue;
    plain += Lower(c) == 'd' ? 'e' : c;
    if (plain.ends_with("e+")) plain.pop_back();
  }
  return ReadDouble(plain);
}

Long RoundToLong(double value) {
  const double rounded = std::nearbyint(value);  // halves to even, the default rounding mode
  if (!(rounded >= std::numeric_limits<Long>::min() && rounded <= std::numeric_limits<Long>::max())) {
    throw Error(error_number::kOverflow, "", "Overflow");
  }
  return static_cast<Long>(rounded);
}

Text CurrencyText(std::int64_t ten_thousandths) {
  const bool negative = ten_thousandths < 0;
  const std::uint64_t magnitude =
      negative ? 0 - static_cast<std::uint64_t>(ten_thousandths) : static_cast<std::uint64_t>(ten_thousandths);
  Text text(negative ? "-" : "");
  text += std::to_string(magnitude / 10000);
  if (const std::uint64_t rest = magnitude % 10000; rest != 0) {
    Text fraction = std::to_string(10000 + rest).substr(1);
    fraction.erase(fraction.find_last_not_of('0') + 1);
    text += '.';
    text += fraction;
  }
  return text;
}

[[noreturn]] void ThrowInvalidNull() {
  throw Error(error_number::kInvalidNull, "", "Invalid use of Null");
}

double TextToDouble(std::string_view text) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) ThrowTypeMismatch();
  return *number;
}

}  // namespace

Text NumberText(double number) {
  std::array<char, 40> buffer;
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific, 14);
  const std::string_view scientific(buffer.data(), static_cast<std::size_t>(end.ptr - buffer.data()));
  const std::size_t e = scientific.find('e');
  if (e == std::string_view::npos) return Text(scientific);  // inf, nan
  Text digits;
  for (const char c : scientific.substr(0, e)) {
    if (IsDigit(c)) digits += c;
  }
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.empty()) return "0";
  int exponent = 0;
  const char* first = scientific.data() + e + 1;
  std::from_chars(*first == '+' ? first + 1 : first, scientific.data() + scientific.size(), exponent);
  const Text sign = number < 0 ? "-" : "";
  const int length = static_cast<int>(digits.size());
  if (exponent >= 15 || exponent < -15) {
    Text text = sign + digits.substr(0, 1);
    if (length > 1) text.append(".").append(digits, 1);
    const Text magnitude = std::to_string(std::abs(exponent));
    return text + (exponent < 0 ? "E-" : "E+") + (magnitude.size() < 2 ? "0" : "") + magnitude;
  }
  if (exponent < 0) return sign + "0." + Text(static_cast<std::size_t>(-exponent - 1), '0') + digits;
  if (length <= exponent + 1) return sign + digits + Text(static_cast<std::size_t>(exponent + 1 - length), '0');
  const auto whole = static_cast<std::size_t>(exponent + 1);
  return sign + digits.substr(0, whole) + "." + digits.substr(whole);
}

Text ToText(const Variant& value) {
  switch (value.type()) {
    case VariantType::Empty:
      return "";
    case VariantType::Null:
      ThrowInvalidNull();
    case VariantType::Short:
    case VariantType::Long:
      return std::to_string(value.integer());
    case VariantType::Single: {
      std::array<char, 32> buffer;  // 7 digits are what a 32-bit float holds
      std::snprintf(buffer.data(), buffer.size(), "%.7g", value.real());
      return NumberText(std::strtod(buffer.data(), nullptr));
    }
    case VariantType::Double:
      return NumberText(value.real());
    case VariantType::Currency:
      return CurrencyText(value.integer());
    case VariantType::Date:
      return DateText(value.real());
    case VariantType::Text:
    case VariantType::Decimal:
      return Text(value.text());
    case VariantType::Boolean:
      return value.integer() != 0 ? "True" : "False";
    case VariantType::Object:
    case VariantType::Missing:
    case VariantType::Array:
      break;
  }
  ThrowTypeMismatch();
}

double ToDouble(const Variant& value) {
  switch (value.type()) {
    case VariantType::Empty:
      return 0;
    case VariantType::Null:
      ThrowInvalidNull();
    case VariantType::Short:
    case VariantType::Long:
      return static_cast<double>(value.integer());
    case VariantType::Single:
    case VariantType::Double:
    case VariantType::Date:
      return value.real();
    case VariantType::Currency:
      return static_cast<double>(value.integer()) / 10000;
    case VariantType::Text:
    case VariantType::Decimal:
      return TextToDouble(value.text());
    case VariantType::Boolean:
      return value.integer() != 0 ? -1 : 0;
    case VariantType::Object:
    case VariantType::Missing:
    case VariantType::Array:
      break;
  }
  ThrowTypeMismatch();
}

Long ToLong(const Variant& value) {
  if (value.type() == VariantType::Long || value.type() == VariantType::Short) {
    return static_cast<Long>(value.integer());
  }
  return RoundToLong(ToDouble(value));
}

bool ToBoolean(const Variant& value) {
  if (value.IsText()) {
    if (EqualsIgnoreCase(value.text(), "true")) return true;
    if (EqualsIgnoreCase(value.text(), "false")) return false;
  }
  return ToDouble(value) != 0;
}

bool EqualsNumber(const Variant& value, double number) {
  return !value.IsNull() && ToDouble(value) == number;
}

std::optional<double> ParseNumber(std::string_view text) {
  text = TrimWhite(text);
  if (text.starts_with('&')) return ParsePrefixed(text);
  bool negative = false;
  bool sign_seen = false;
  if (text.size() > 1 && text.front() == '(' && text.back() == ')') {
    negative = sign_seen = true;
    text = TrimWhite(text.substr(1, text.size() - 2));
  }
  if (!text.empty() && !sign_seen && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    sign_seen = true;
    text = TrimWhite(text.substr(1));
  }
  const std::size_t length = NumberLength(text, true);
  if (length == 0) return std::nullopt;
  const std::string_view rest = TrimWhite(text.substr(length));
  if (!rest.empty()) {
    if (sign_seen || rest.size() != 1 || (rest != "-" && rest != "+")) return std::nullopt;
    negative = rest == "-";
  }
  const double magnitude = ReadUnsigned(text.substr(0, length));
  return negative ? -magnitude : magnitude;
}

namespace {

// A number beyond the range of a float counts as the largest one.
double LargestAtMost(std::string_view number) {
  try {
    return ReadUnsigned(number);
  } catch (const Error&) {
    return std::numeric_limits<double>::max();
  }
}

}  // namespace

double LeadingNumber(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const std::size_t length = NumberLength(text, false);
  if (length == 0) return 0;
  const double magnitude = LargestAtMost(text.substr(0, length));
  return negative ? -magnitude : magnitude;
}

bool IsNumeric(const Variant& value) {
  switch (value.type()) {
    case VariantType::Empty:
    case VariantType::Short:
    case VariantType::Long:
    case VariantType::Single:
    case VariantType::Double:
    case VariantType::Currency:
    case VariantType::Boolean:
    case VariantType::Decimal:
      return true;
    case VariantType::Text:
      try {
        return ParseNumber(value.text()).has_value();
      } catch (const Error&) {
        return false;  // digits beyond any number's range
      }
    case VariantType::Null:
    case VariantType::Date:
    case VariantType::Object:
    case VariantType::Missing:
    case VariantType::Array:
      break;
  }
  return false;
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<Text> Split(std::string_view text, char separator) {
  std::vector<Text> parts;
  if (text.empty()) return parts;
  std::size_t start = 0;
  for (std::size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator, start)) {
    parts.emplace_back(text.substr(start, at - start));
    start = at + 1;
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

Text Replace(std::string_view text, std::string_view from, std::string_view to) {
  Text result;
  result.reserve(text.size());
  std::size_t start = 0;
  for (std::size_t at = text.find(from); at != std::string_view::npos; at = text.find(from, start)) {
    result.append(text, start, at - start).append(to);
    start = at + from.size();
  }
  return result.append(text, start);
}

bool EqualsIgnoreCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (Lower(left[i]) != Lower(right[i])) return false;
  }
  return true;
}

namespace {

constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};

std::optional<int> ReadDigits(std::string_view& text, std::size_t at_most) {
  int value = 0;
  std::size_t count = 0;
  while (count < at_most && count < text.size() && IsDigit(text[count])) value = value * 10 + (text[count++] - '0');
  if (count == 0) return std::nullopt;
  text.remove_prefix(count);
  return value;
}

bool Skip(std::string_view& text, char c) {
  if (!text.starts_with(c)) return false;
  text.remove_prefix(1);
  return true;
}

// hh:mm, :ss, .fff as a fraction of a day.
std::optional<double> ParseTime(std::string_view text) {
  const std::optional<int> hour = ReadDigits(text, 2);
  if (!hour || *hour > 23 || !Skip(text, ':')) return std::nullopt;
  const std::optional<int> minute = ReadDigits(text, 2);
  if (!minute || *minute > 59) return std::nullopt;
  double seconds = 0;
  if (Skip(text, ':')) {
    const std::optional<int> second = ReadDigits(text, 2);
    if (!second || *second > 59) return std::nullopt;
    seconds = *second;
    if (Skip(text, '.')) {
      const std::size_t before = text.size();
      const std::optional<int> fraction = ReadDigits(text, 7);
      if (!fraction) return std::nullopt;
      seconds += *fraction / std::pow(10.0, static_cast<double>(before - text.size()));
    }
  }
  if (!text.empty()) return std::nullopt;
  return (*hour * 3600 + *minute * 60 + seconds) / 86400;
}

}  // namespace

Text DateText(double days) {
  const double whole = std::floor(days);
  // Before day zero the time still counts forward from midnight: -1.25 is 06:00 of the day before.
  const double fraction = days >= 0 ? days - whole : std::ceil(days) - days;
  auto day = static_cast<int>(days >= 0 ? whole : std::ceil(days));
  auto seconds = static_cast<int>(std::lround(fraction * 86400));
  if (seconds == 86400) {
    seconds = 0;
    ++day;
  }
  const std::chrono::year_month_day date(kDayZero + std::chrono::days(day));
  std::array<char, 40> buffer;
  int length = std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                             static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  if (seconds != 0) {
    length += std::snprintf(buffer.data() + length, buffer.size() - static_cast<std::size_t>(length), " %02d:%02d:%02d",
                            seconds / 3600, seconds / 60 % 60, seconds % 60);
  }
  return Text(buffer.data(), static_cast<std::size_t>(length));
}

std::optional<double> ParseDate(std::string_view text) {
  const std::optional<int> year = ReadDigits(text, 4);
  if (!year || !Skip(text, '-')) return std::nullopt;
  const std::optional<int> month = ReadDigits(text, 2);
  if (!month || !Skip(text, '-')) return std::nullopt;
  const std::optional<int> day = ReadDigits(text, 2);
  if (!day) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  if (!date.ok()) return std::nullopt;
  const auto days = static_cast<double>((std::chrono::sys_days(date) - kDayZero).count());
  if (text.empty()) return days;
  if (!Skip(text, ' ') && !Skip(text, 'T')) return std::nullopt;
  const std::optional<double> time = ParseTime(text);
  if (!time) return std::nullopt;
  return days >= 0 ? days + *time : days - *time;
}

}  // namespace rebate
