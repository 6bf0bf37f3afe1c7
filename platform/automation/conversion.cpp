#include "platform/automation/conversion.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace rebate {
namespace {

double ReadDouble(std::string_view digits) {
  const FloatReading reading = ReadFloat(digits);
  if (reading.outcome == FloatReading::Outcome::Overflow) throw Error(error_number::kOverflow, "", "Overflow");
  return reading.number;
}

// &H1F and &O17: 16-bit values above &H7FFF are negative, as are 32-bit ones above &H7FFFFFFF.
std::optional<double> ParsePrefixed(std::string_view text) {
  const char kind = text.size() > 1 ? AsciiLower(text[1]) : '\0';
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
  if (at < text.size() && (AsciiLower(text[at]) == 'e' || AsciiLower(text[at]) == 'd')) {
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
    plain += AsciiLower(c) == 'd' ? 'e' : c;
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

[[noreturn]] void ThrowInvalidNull() {
  throw Error(error_number::kInvalidNull, "", "Invalid use of Null");
}

double TextToDouble(std::string_view text) {
  const std::optional<double> number = ParseNumber(text);
  if (!number) ThrowTypeMismatch();
  return *number;
}

}  // namespace

Text ToText(const Variant& value) {
  switch (value.type()) {
    case VariantType::Empty:
      return "";
    case VariantType::Null:
      ThrowInvalidNull();
    case VariantType::Short:
    case VariantType::Long:
      return std::to_string(value.integer());
    case VariantType::Single:
      return NumberText(value.real(), 7);
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
      return CurrencyNumber(value.integer());
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

bool IsTheNumber(const Variant& value, double number) {
  return IsNumeric(value) && ToDouble(value) == number;
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
  text = TrimWhite(text);
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

}  // namespace rebate
