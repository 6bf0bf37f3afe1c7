#pragma once

#include <boost/multiprecision/cpp_int.hpp>
#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// An exact decimal number of up to 38 digits: a whole number of units of 10^-scale. 1.50 with two digits behind the
// point and 1.5 with one are equal, and print as they are kept.
class Decimal {
 public:
  static constexpr int kMaxDigits = 38;
  using Wide = boost::multiprecision::uint128_t;

  Decimal() = default;
  Decimal(std::int64_t integer);  // NOLINT: a whole number is one of scale 0
  // `units` times 10^-scale, scale from 0 to 38; raises nothing, the caller keeps below 10^38.
  static Decimal Of(bool negative, Wide units, int scale);

  // Reads an optional sign, digits and an optional fraction ("12", "-.5", "1."); no blanks, no exponent. The scale is
  // the count of digits behind the point. Nothing for other texts and for more than 38 digits that count.
  static std::optional<Decimal> Parse(std::string_view text);
  // The digits of the float's shortest text, which for 0.1 are 0.1; with the scale that they need, at most 38 (digits
  // beyond that are rounded away). Nothing for what has more than 38 digits in front of the point, and for no number.
  static std::optional<Decimal> FromDouble(double number);

  bool negative() const { return negative_; }
  bool IsZero() const { return units_ == 0; }
  int scale() const { return scale_; }
  const Wide& units() const { return units_; }
  // How many digits the number has in front of its point; 0 for 0.5.
  int IntegerDigits() const;

  // The same number with `scale` digits behind the point: rounded half away from zero, or cut. Nothing where it has
  // more than 38 digits then.
  enum class Digits { Round, Cut };
  std::optional<Decimal> WithScale(int scale, Digits digits = Digits::Round) const;
  // Without zeros at the end of the fraction.
  Decimal Trimmed() const;
  // Rounded (or cut) to `places` digits behind the point, which may be negative; the scale stays.
  std::optional<Decimal> RoundedTo(int places, Digits digits = Digits::Round) const;
  Decimal Negated() const;

  // Each gives the exact result, rounded half away from zero (a quotient may be cut instead) to `scale` digits behind
  // the point; nothing where it has more than 38 digits. The divisor isn't 0.
  static std::optional<Decimal> Add(const Decimal& left, const Decimal& right, int scale);
  static std::optional<Decimal> Multiply(const Decimal& left, const Decimal& right, int scale);
  static std::optional<Decimal> Divide(const Decimal& left, const Decimal& right, int scale, Digits digits);
  // The remainder, with the sign of `left`.
  static std::optional<Decimal> Remainder(const Decimal& left, const Decimal& right, int scale);

  // By value, whatever the scales.
  std::strong_ordering operator<=>(const Decimal& other) const;
  bool operator==(const Decimal& other) const { return (*this <=> other) == 0; }

  // All digits of the scale: "1.50", "-0.5", "12". Never "-0".
  Text ToText() const;
  // The one text that equal numbers share, as a column keeps it: no zeros at the end of a fraction, no point without
  // one, no plus sign: "1.5", "200000", "0".
  Text ToKey() const;
  double ToDouble() const;
  // The number cut at its point; nothing beyond 64 bits.
  std::optional<std::int64_t> ToInteger() const;

 private:
  Wide units_ = 0;
  std::int8_t scale_ = 0;
  bool negative_ = false;
};

// Compares two keys (Decimal::ToKey) as the numbers that they are, without reading them: less than, equal to or greater
// than 0. Texts that are no keys compare in some fixed order.
int CompareKeys(std::string_view left, std::string_view right);

}  // namespace rebate
