#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/values/types.h"

// Numbers as text and back. None of this knows a locale.
namespace rebate {

// A float with up to `digits` significant digits and no trailing zeros, as the automation world writes it: plain from
// 1E-15 up to 1E+15, beyond that "1.5E+20", "1E-16". A 32-bit float holds seven digits.
Text NumberText(double number, int digits = 15);
// The fewest digits that read back as the same float, always with a fraction or an exponent: "0.1", "3.0", "1e+300".
Text ShortestText(double number);
Text ShortestText(float number);
// As a server turns a float into text: up to `digits` significant digits without trailing zeros, beyond that many
// integer digits and below 0.0001 with an exponent of three digits: "1.5", "1.23457e+006".
Text ServerFloatText(double number, int digits);
// One digit in front of the point, `digits` in all, and an exponent of three digits: "1.2345670e+003".
Text ScientificText(double number, int digits);
// Digits up to `places` behind the point, rounded half away from zero as the float's shortest digits say: "12.50".
Text FixedText(double number, int places);

// The float that `text` is: an optional sign, digits, a fraction, an exponent, nothing else. A number too small for a
// float is 0; `overflow` where it is too large.
struct FloatReading {
  enum class Outcome : std::uint8_t { Ok, NoNumber, Overflow };
  Outcome outcome = Outcome::NoNumber;
  double number = 0;
};
FloatReading ReadFloat(std::string_view text);

// The integer that `text` is: an optional sign and digits.
struct IntegerReading {
  FloatReading::Outcome outcome = FloatReading::Outcome::NoNumber;
  std::int64_t number = 0;
};
IntegerReading ReadInteger(std::string_view text);

// The whole number that `text` is, digits with at most a minus sign in front; nothing for other texts and for what T
// doesn't hold.
template <std::integral T>
std::optional<T> WholeNumber(std::string_view text) {
  T number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// `number` (a sign, digits, a fraction, an exponent) as plain digits, exactly: "1.5e3" is "1500". Nothing for other
// texts and for more than `most` digits.
std::optional<Text> PlainDigits(std::string_view number, std::size_t most = 400);

// ---- currency: ten-thousandths in 64 bits ----

// The units of an amount in plain digits ("-12.5", ".5"), further digits rounded half away from zero. Nothing for other
// texts and for an amount outside 64 bits.
std::optional<std::int64_t> CurrencyUnits(std::string_view amount);
// The amount with the digits that it needs: "-12.5", "3".
Text CurrencyText(std::int64_t units);
double CurrencyNumber(std::int64_t units);

}  // namespace rebate
