#include "platform/values/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/values/ascii.h"
#include "platform/values/decimal.h"

namespace rebate {
namespace {

constexpr int kPlainExponents = 15;  // the automation world writes numbers from 1E-15 to 1E+15 without an exponent

// A float as the digits that count and the power of ten of the first one: 0.0125 is "125" and -2.
struct Digits {
  bool finite = true;
  bool negative = false;
  Text digits;
  int exponent = 0;
};

Digits DigitsOf(double number, int count) {
  Digits result;
  result.finite = std::isfinite(number);
  result.negative = std::signbit(number);
  if (!result.finite) return result;
  std::array<char, 400> buffer;
  const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::abs(number),
                                        std::chars_format::scientific, count - 1)
                              .ptr;
  const char* at = buffer.data();
  for (; *at != 'e'; ++at) {
    if (*at != '.') result.digits += *at;
  }
  std::from_chars(at[1] == '+' ? at + 2 : at + 1, end, result.exponent);
  return result;
}

Text NoNumberText(double number) {
  return std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf";
}

void DropZeros(Text& digits) {
  digits.erase(std::min(digits.find_last_not_of('0') + 1, digits.size()));
}

// The digits with the point where it belongs; no exponent.
Text Plain(const Digits& number) {
  Text text(number.negative ? "-" : "");
  const auto count = static_cast<int>(number.digits.size());
  if (number.exponent < 0) {
    return text.append("0.").append(static_cast<std::size_t>(-number.exponent - 1), '0').append(number.digits);
  }
  if (count <= number.exponent + 1) {
    return text.append(number.digits).append(static_cast<std::size_t>(number.exponent + 1 - count), '0');
  }
  const auto whole = static_cast<std::size_t>(number.exponent + 1);
  return text.append(number.digits, 0, whole).append(1, '.').append(number.digits, whole);
}

Text Scientific(const Digits& number, std::string_view mark, std::size_t exponent_digits) {
  Text text(number.negative ? "-" : "");
  text += number.digits[0];
  if (number.digits.size() > 1) text.append(1, '.').append(number.digits, 1);
  const Text magnitude = std::to_string(std::abs(number.exponent));
  text.append(mark).append(1, number.exponent < 0 ? '-' : '+');
  if (magnitude.size() < exponent_digits) text.append(exponent_digits - magnitude.size(), '0');
  return text += magnitude;
}

template <typename Float>
Text Shortest(Float number) {
  std::array<char, 64> buffer;
  Text text(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr);
  if (text.find_first_of(".en") == Text::npos) text += ".0";
  return text;
}

// Whether the number that overflowed did so for being too small; its text is well formed.
bool TooSmall(std::string_view text) {
  const std::size_t mark = text.find_first_of("eE");
  const std::string_view mantissa = text.substr(0, mark);
  if (mantissa.find_first_of("123456789") == std::string_view::npos) return true;
  if (mark != std::string_view::npos) return text[mark + 1] == '-';
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  return mantissa.substr(0, point).find_first_of("123456789") == std::string_view::npos;
}

std::string_view WithoutPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return text;
}

// A number's text in its parts, none of which holds anything but digits.
struct Parts {
  bool negative = false;
  std::string_view whole;
  std::string_view fraction;
};

std::optional<Parts> Split(std::string_view amount) {
  Parts parts;
  parts.negative = amount.starts_with('-');
  if (parts.negative || amount.starts_with('+')) amount.remove_prefix(1);
  const std::size_t point = std::min(amount.find('.'), amount.size());
  parts.whole = amount.substr(0, point);
  parts.fraction = amount.substr(std::min(point + 1, amount.size()));
  if (parts.whole.empty() && parts.fraction.empty()) return std::nullopt;
  for (const std::string_view part : {parts.whole, parts.fraction}) {
    for (const char c : part) {
      if (!IsDigit(c)) return std::nullopt;
    }
  }
  return parts;
}

}  // namespace

Text NumberText(double number, int digits) {
  Digits parts = DigitsOf(number, digits);
  if (!parts.finite) return NoNumberText(number);
  DropZeros(parts.digits);
  if (parts.digits.empty()) return "0";
  const bool plain = parts.exponent < kPlainExponents && parts.exponent >= -kPlainExponents;
  return plain ? Plain(parts) : Scientific(parts, "E", 2);
}

Text ShortestText(double number) {
  return Shortest(number);
}
Text ShortestText(float number) {
  return Shortest(number);
}

Text ServerFloatText(double number, int digits) {
  Digits parts = DigitsOf(number, digits);
  if (!parts.finite) return NoNumberText(number);
  DropZeros(parts.digits);
  if (parts.digits.empty()) return "0";
  return parts.exponent < digits && parts.exponent >= -4 ? Plain(parts) : Scientific(parts, "e", 3);
}

Text ScientificText(double number, int digits) {
  const Digits parts = DigitsOf(number, digits);
  return parts.finite ? Scientific(parts, "e", 3) : NoNumberText(number);
}

Text FixedText(double number, int places) {
  if (!std::isfinite(number)) return NoNumberText(number);
  if (const auto exact = Decimal::FromDouble(number)) {
    if (const auto rounded = exact->WithScale(std::min(places, Decimal::kMaxDigits))) return rounded->ToText();
  }
  std::array<char, 512> buffer;
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed, places).ptr;
  return Text(buffer.data(), end);
}

FloatReading ReadFloat(std::string_view text) {
  text = WithoutPlus(text);
  // "inf" and "nan" are no numbers here.
  if (text.find_first_of("iInN") != std::string_view::npos) return {};
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) return {};
  if (error != std::errc::result_out_of_range) return {FloatReading::Outcome::Ok, number};
  if (TooSmall(text)) return {FloatReading::Outcome::Ok, 0};
  return {FloatReading::Outcome::Overflow, 0};
}

IntegerReading ReadInteger(std::string_view text) {
  text = WithoutPlus(text);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) return {};
  if (error == std::errc::result_out_of_range) return {FloatReading::Outcome::Overflow, 0};
  return {FloatReading::Outcome::Ok, number};
}

std::optional<Text> PlainDigits(std::string_view number, std::size_t most) {
  const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
  const std::optional<Parts> parts = Split(number.substr(0, mark));
  if (!parts) return std::nullopt;
  std::int64_t exponent = 0;
  if (mark < number.size()) {
    const IntegerReading reading = ReadInteger(number.substr(mark + 1));
    if (reading.outcome != FloatReading::Outcome::Ok) return std::nullopt;
    exponent = reading.number;
  }
  Digits digits;
  digits.negative = parts->negative;
  digits.digits = Text(parts->whole) + Text(parts->fraction);
  const std::size_t zeros = std::min(digits.digits.find_first_not_of('0'), digits.digits.size());
  const auto limit = static_cast<std::int64_t>(most);
  if (zeros == digits.digits.size()) return "0";
  if (std::abs(exponent) > limit || digits.digits.size() - zeros > most) return std::nullopt;
  exponent += static_cast<std::int64_t>(parts->whole.size()) - 1 - static_cast<std::int64_t>(zeros);
  if (std::abs(exponent) > limit) return std::nullopt;
  digits.digits.erase(0, zeros);
  digits.exponent = static_cast<int>(exponent);
  return Plain(digits);
}

std::optional<std::int64_t> CurrencyUnits(std::string_view amount) {
  const std::optional<Parts> parts = Split(amount);
  if (!parts) return std::nullopt;
  Text units(parts->negative ? "-" : "");
  units += parts->whole;
  units += parts->fraction.substr(0, 4);
  units.append(4 - std::min<std::size_t>(parts->fraction.size(), 4), '0');
  const IntegerReading reading = ReadInteger(units);
  if (reading.outcome != FloatReading::Outcome::Ok) return std::nullopt;
  if (parts->fraction.size() <= 4 || parts->fraction[4] < '5') return reading.number;
  using Limits = std::numeric_limits<std::int64_t>;
  if (reading.number == (parts->negative ? Limits::min() : Limits::max())) return std::nullopt;
  return reading.number + (parts->negative ? -1 : 1);
}

Text CurrencyText(std::int64_t units) {
  return Decimal::Of(units < 0, Decimal(units).units(), 4).ToKey();
}

double CurrencyNumber(std::int64_t units) {
  return static_cast<double>(units) / 10'000;
}

}  // namespace rebate
