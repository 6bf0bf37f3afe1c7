#include "platform/values/decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/values/ascii.h"

namespace rebate {
namespace {

using Wide = Decimal::Wide;
// Holds a product of two numbers and, beside it, all the digits that a change of scale may add.
using Widest = boost::multiprecision::uint512_t;

constexpr int kWordDigits = 19;  // that 64 bits hold, whatever they are
constexpr std::uint64_t kWordPower = 10'000'000'000'000'000'000U;

constexpr std::array<std::uint64_t, 20> kWordPowers = [] {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

const Wide& PowerOfTen(int exponent) {
  static const std::array<Wide, Decimal::kMaxDigits + 1> powers = [] {
    std::array<Wide, Decimal::kMaxDigits + 1> made;
    made[0] = 1;
    for (std::size_t i = 1; i < made.size(); ++i) made[i] = made[i - 1] * 10;
    return made;
  }();
  return powers[static_cast<std::size_t>(exponent)];
}

Widest WidestPower(int exponent) {
  Widest power = 1;
  for (; exponent > Decimal::kMaxDigits; exponent -= Decimal::kMaxDigits) power *= PowerOfTen(Decimal::kMaxDigits);
  return power * PowerOfTen(exponent);
}

bool FitsWord(const Wide& units) {
  return units <= std::numeric_limits<std::uint64_t>::max();
}
std::uint64_t Word(const Wide& units) {
  return static_cast<std::uint64_t>(units);
}

// units * 10^exponent in 64 bits; false where it doesn't fit.
bool ScaledUp(const Wide& units, int exponent, std::uint64_t& scaled) {
  return exponent <= kWordDigits && FitsWord(units) &&
         !__builtin_mul_overflow(Word(units), kWordPowers[static_cast<std::size_t>(exponent)], &scaled);
}

template <typename Number>
Number Quotient(const Number& units, const Number& divisor, Decimal::Digits digits) {
  const Number quotient = units / divisor;
  const Number rest = units - quotient * divisor;
  return digits == Decimal::Digits::Round && rest >= divisor - rest ? Number(quotient + 1) : quotient;
}

// units * 10^-from as a number of scale `to`.
std::optional<Decimal> Rescaled(bool negative, Widest units, int from, int to, Decimal::Digits digits) {
  if (to >= from) {
    units *= WidestPower(to - from);
  } else {
    units = Quotient(units, WidestPower(from - to), digits);
  }
  if (units >= PowerOfTen(Decimal::kMaxDigits)) return std::nullopt;
  return Decimal::Of(negative, static_cast<Wide>(units), to);
}

// The digits of `units`, written up to `end`; where they start.
char* WriteDigits(Wide units, char* end) {
  std::array<char, 20> word;
  while (!FitsWord(units)) {
    const Wide rest = units / kWordPower;
    const auto low = Word(units - rest * kWordPower);
    const char* const stop = std::to_chars(word.data(), word.data() + word.size(), low).ptr;
    const auto written = stop - word.data();
    end = std::copy_backward(word.data(), const_cast<char*>(stop), end);
    end -= kWordDigits - written;
    std::fill_n(end, kWordDigits - written, '0');
    units = rest;
  }
  const char* const stop = std::to_chars(word.data(), word.data() + word.size(), Word(units)).ptr;
  return std::copy_backward(word.data(), const_cast<char*>(stop), end);
}

int CountDigits(const Wide& units) {
  if (FitsWord(units)) {
    const auto past = std::upper_bound(kWordPowers.begin(), kWordPowers.end(), Word(units));
    return static_cast<int>(past - kWordPowers.begin());
  }
  int digits = kWordDigits;
  while (digits < Decimal::kMaxDigits && units >= PowerOfTen(digits)) ++digits;
  return digits;
}

// Sign, digits and a point `scale` digits from the end; at least one digit stands in front of it.
Text Written(bool negative, const Wide& units, int scale, bool trimmed) {
  std::array<char, 48> digits;
  char* const end = digits.data() + digits.size();
  char* first = WriteDigits(units, end);
  while (end - first <= scale) *--first = '0';
  char* last = end;
  if (trimmed) {
    for (; scale > 0 && last[-1] == '0'; --scale) --last;
  }
  Text text;
  text.reserve(static_cast<std::size_t>(last - first) + 2);
  if (negative) text += '-';
  text.append(first, last - scale);
  if (scale > 0) text.append(1, '.').append(last - scale, last);
  return text;
}

}  // namespace

Decimal::Decimal(std::int64_t integer) : negative_(integer < 0) {
  units_ = negative_ ? 0 - static_cast<std::uint64_t>(integer) : static_cast<std::uint64_t>(integer);
}

Decimal Decimal::Of(bool negative, Wide units, int scale) {
  Decimal number;
  number.negative_ = negative && units != 0;
  number.units_ = std::move(units);
  number.scale_ = static_cast<std::int8_t>(scale);
  return number;
}

std::optional<Decimal> Decimal::Parse(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  // Digits are gathered in words, since 128 bits are slow to multiply.
  Wide units = 0;
  std::uint64_t word = 0;
  int in_word = 0;
  int count = 0;
  int scale = -1;
  bool any = false;
  for (const char c : text) {
    if (c == '.' && scale < 0) {
      scale = 0;
      continue;
    }
    if (!IsDigit(c)) return std::nullopt;
    any = true;
    if (scale >= 0 && ++scale > kMaxDigits) return std::nullopt;
    if (count == 0 && c == '0') continue;
    if (++count > kMaxDigits) return std::nullopt;
    if (in_word == kWordDigits) {
      units = units * kWordPower + word;
      word = 0;
      in_word = 0;
    }
    word = word * 10 + static_cast<std::uint64_t>(c - '0');
    ++in_word;
  }
  if (!any) return std::nullopt;
  if (count > kWordDigits) {
    units = units * kWordPowers[static_cast<std::size_t>(in_word)] + word;
  } else {
    units = word;
  }
  return Of(negative, units, std::max(scale, 0));
}

std::optional<Decimal> Decimal::FromDouble(double number) {
  if (!std::isfinite(number)) return std::nullopt;
  std::array<char, 40> text;
  const char* const end =
      std::to_chars(text.data(), text.data() + text.size(), std::abs(number), std::chars_format::scientific).ptr;
  std::uint64_t units = 0;
  int scale = 0;
  const char* at = text.data();
  for (bool fraction = false; *at != 'e'; ++at) {
    if (*at == '.') {
      fraction = true;
    } else {
      units = units * 10 + static_cast<std::uint64_t>(*at - '0');
      scale += fraction ? 1 : 0;
    }
  }
  int exponent = 0;
  std::from_chars(at[1] == '+' ? at + 2 : at + 1, end, exponent);
  scale -= exponent;
  if (units == 0) return Decimal();
  // A change of scale by more digits than there are leaves nothing, or too much.
  if (scale > 2 * kMaxDigits) return Of(false, 0, kMaxDigits);
  if (scale < -kMaxDigits) return std::nullopt;
  const int kept = std::clamp(scale, 0, kMaxDigits);
  if (scale >= 0) return Rescaled(number < 0, units, scale, kept, Digits::Round);
  return Rescaled(number < 0, Widest(units) * WidestPower(-scale), 0, 0, Digits::Round);
}

int Decimal::IntegerDigits() const {
  return std::max(0, CountDigits(units_) - scale_);
}

std::optional<Decimal> Decimal::WithScale(int scale, Digits digits) const {
  if (scale == scale_) return *this;
  if (scale > scale_) {
    std::uint64_t scaled = 0;
    if (ScaledUp(units_, scale - scale_, scaled)) return Of(negative_, scaled, scale);
  } else if (scale_ - scale <= kWordDigits && FitsWord(units_)) {
    return Of(negative_, Quotient(Word(units_), kWordPowers[static_cast<std::size_t>(scale_ - scale)], digits), scale);
  }
  return Rescaled(negative_, Widest(units_), scale_, scale, digits);
}

Decimal Decimal::Trimmed() const {
  Decimal number = *this;
  if (FitsWord(units_)) {
    std::uint64_t word = Word(units_);
    while (number.scale_ > 0 && word % 10 == 0) {
      word /= 10;
      --number.scale_;
    }
    number.units_ = word;
  } else {
    while (number.scale_ > 0 && number.units_ % 10 == 0) {
      number.units_ /= 10;
      --number.scale_;
    }
  }
  return number;
}

std::optional<Decimal> Decimal::RoundedTo(int places, Digits digits) const {
  if (places >= scale_) return *this;
  const int dropped = scale_ - places;
  if (dropped > kMaxDigits + 1) return Of(false, 0, scale_);
  const Widest power = WidestPower(dropped);
  const Widest units = Quotient(Widest(units_), power, digits) * power;
  return Rescaled(negative_, units, scale_, scale_, digits);
}

Decimal Decimal::Negated() const {
  return Of(!negative_, units_, scale_);
}

std::optional<Decimal> Decimal::Add(const Decimal& left, const Decimal& right, int scale) {
  const int common = std::max(left.scale_, right.scale_);
  std::uint64_t a = 0;
  std::uint64_t b = 0;
  std::uint64_t sum = 0;
  if (ScaledUp(left.units_, common - left.scale_, a) && ScaledUp(right.units_, common - right.scale_, b) &&
      (left.negative_ != right.negative_ || !__builtin_add_overflow(a, b, &sum))) {
    if (left.negative_ == right.negative_) return Of(left.negative_, sum, common).WithScale(scale);
    const bool left_wins = a >= b;
    return Of(left_wins ? left.negative_ : right.negative_, left_wins ? a - b : b - a, common).WithScale(scale);
  }
  const Widest x = Widest(left.units_) * PowerOfTen(common - left.scale_);
  const Widest y = Widest(right.units_) * PowerOfTen(common - right.scale_);
  if (left.negative_ == right.negative_) return Rescaled(left.negative_, x + y, common, scale, Digits::Round);
  if (x >= y) return Rescaled(left.negative_, x - y, common, scale, Digits::Round);
  return Rescaled(right.negative_, y - x, common, scale, Digits::Round);
}

std::optional<Decimal> Decimal::Multiply(const Decimal& left, const Decimal& right, int scale) {
  const bool negative = left.negative_ != right.negative_;
  const int exact = left.scale_ + right.scale_;
  std::uint64_t product = 0;
  if (exact <= kMaxDigits && FitsWord(left.units_) && FitsWord(right.units_) &&
      !__builtin_mul_overflow(Word(left.units_), Word(right.units_), &product)) {
    return Of(negative, product, exact).WithScale(scale);
  }
  return Rescaled(negative, Widest(left.units_) * right.units_, exact, scale, Digits::Round);
}

std::optional<Decimal> Decimal::Divide(const Decimal& left, const Decimal& right, int scale, Digits digits) {
  const bool negative = left.negative_ != right.negative_;
  const int shift = scale + right.scale_ - left.scale_;
  std::uint64_t dividend = 0;
  if (shift >= 0 && FitsWord(right.units_) && ScaledUp(left.units_, shift, dividend)) {
    return Of(negative, Quotient(dividend, Word(right.units_), digits), scale);
  }
  Widest units = left.units_;
  Widest divisor = right.units_;
  (shift >= 0 ? units : divisor) *= WidestPower(std::abs(shift));
  return Rescaled(negative, Quotient(units, divisor, digits), scale, scale, digits);
}

std::optional<Decimal> Decimal::Remainder(const Decimal& left, const Decimal& right, int scale) {
  const int common = std::max(left.scale_, right.scale_);
  const Widest a = Widest(left.units_) * PowerOfTen(common - left.scale_);
  const Widest b = Widest(right.units_) * PowerOfTen(common - right.scale_);
  return Rescaled(left.negative_, a % b, common, scale, Digits::Round);
}

std::strong_ordering Decimal::operator<=>(const Decimal& other) const {
  if (negative_ != other.negative_) return negative_ ? std::strong_ordering::less : std::strong_ordering::greater;
  const Decimal& larger = negative_ ? other : *this;  // where it has the larger magnitude
  const Decimal& smaller = negative_ ? *this : other;
  const int common = std::max(scale_, other.scale_);
  std::uint64_t a = 0;
  std::uint64_t b = 0;
  if (ScaledUp(larger.units_, common - larger.scale_, a) && ScaledUp(smaller.units_, common - smaller.scale_, b)) {
    return a <=> b;
  }
  const Widest x = Widest(larger.units_) * PowerOfTen(common - larger.scale_);
  const int order = x.compare(Widest(smaller.units_) * PowerOfTen(common - smaller.scale_));
  return order <=> 0;
}

Text Decimal::ToText() const {
  return Written(negative_, units_, scale_, false);
}

Text Decimal::ToKey() const {
  return Written(negative_, units_, scale_, true);
}

double Decimal::ToDouble() const {
  constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;
  constexpr int kLargestPower = 19;  // of ten that kWordPowers hold and a float holds exactly
  if (FitsWord(units_) && Word(units_) <= kLargestExact && scale_ <= kLargestPower) {
    // One division of two exact numbers rounds as reading the text would.
    const double number =
        static_cast<double>(Word(units_)) / static_cast<double>(kWordPowers[static_cast<std::size_t>(scale_)]);
    return negative_ ? -number : number;
  }
  const Text text = ToText();
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::optional<std::int64_t> Decimal::ToInteger() const {
  const Wide whole = scale_ == 0 ? units_ : Wide(units_ / PowerOfTen(scale_));
  constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (whole > kLargest + (negative_ ? 1 : 0)) return std::nullopt;
  const std::uint64_t magnitude = Word(whole);
  return static_cast<std::int64_t>(negative_ ? 0 - magnitude : magnitude);
}

int CompareKeys(std::string_view left, std::string_view right) {
  const bool negative = left.starts_with('-');
  if (negative != right.starts_with('-')) return negative ? -1 : 1;
  if (negative) {
    left.remove_prefix(1);
    right.remove_prefix(1);
    std::swap(left, right);
  }
  const std::size_t left_point = std::min(left.find('.'), left.size());
  const std::size_t right_point = std::min(right.find('.'), right.size());
  if (left_point != right_point) return left_point < right_point ? -1 : 1;
  // Whole parts of one length stand in the order of their bytes, and so do fractions without zeros at their ends.
  const int order = left.compare(right);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

}  // namespace rebate
