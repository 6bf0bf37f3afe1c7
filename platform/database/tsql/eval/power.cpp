#include "platform/database/tsql/eval/power.h"

#include <cmath>

namespace rebate::tsql {
namespace {

using boost::multiprecision::cpp_int;

// In two halves, which every compiler sees through.
cpp_int UnitsOf(const Decimal& number) {
  const cpp_int high(static_cast<std::uint64_t>(number.units() >> 64));
  return high << 64 | cpp_int(static_cast<std::uint64_t>(number.units() & ~std::uint64_t{0}));
}

cpp_int TenTo(std::int64_t exponent) {
  return pow(cpp_int(10), static_cast<unsigned>(exponent));
}

cpp_int RoundedQuotient(const cpp_int& number, const cpp_int& divisor) {
  return (2 * number + divisor) / (2 * divisor);
}

// |base|^exponent in units of 10^-scale, of a few steps: every digit is worked out, so that halves are seen as such.
cpp_int ExactUnits(const Decimal& base, std::int64_t exponent, int scale) {
  const std::int64_t steps = exponent < 0 ? -exponent : exponent;
  const cpp_int units = pow(UnitsOf(base), static_cast<unsigned>(steps));
  const cpp_int places = TenTo(base.scale() * steps);
  return exponent < 0 ? RoundedQuotient(places * TenTo(scale), units) : RoundedQuotient(units * TenTo(scale), places);
}

// The same for many steps. So long a fraction is no half of anything, and no digit of the result is in doubt.
cpp_int NearUnits(const Decimal& base, std::int64_t exponent, int scale) {
  constexpr int kWorkingPlaces = 120;
  const cpp_int one = TenTo(kWorkingPlaces);
  cpp_int square = UnitsOf(base) * TenTo(kWorkingPlaces - base.scale());
  cpp_int product = one;
  const std::uint64_t steps =
      exponent < 0 ? 0 - static_cast<std::uint64_t>(exponent) : static_cast<std::uint64_t>(exponent);
  for (std::uint64_t rest = steps; rest != 0; rest /= 2) {
    if (rest % 2 != 0) product = product * square / one;
    square = square * square / one;
  }
  return exponent < 0 ? RoundedQuotient(one * TenTo(scale), product) : RoundedQuotient(product * TenTo(scale), one);
}

}  // namespace

std::optional<Decimal> Power(const Decimal& base, std::int64_t exponent, int scale) {
  // Powers far from the digits that a decimal has needn't be worked out.
  constexpr double kFarTooLarge = 40;
  constexpr double kFarTooSmall = -40;
  constexpr std::int64_t kMostExactSteps = 100;
  const bool negative = base.negative() && exponent % 2 != 0;
  if (base.IsZero()) return Decimal::Of(false, exponent == 0 ? 1 : 0, 0).WithScale(scale);
  const double magnitude = std::log10(std::fabs(base.ToDouble())) * static_cast<double>(exponent);
  if (magnitude > kFarTooLarge) return std::nullopt;
  if (magnitude < kFarTooSmall) return Decimal::Of(false, 0, scale);
  const Decimal trimmed = base.Trimmed();
  if (trimmed.units() == 1 && trimmed.scale() == 0) return Decimal::Of(negative, 1, 0).WithScale(scale);
  const bool few_steps = exponent <= kMostExactSteps && exponent >= -kMostExactSteps;
  const cpp_int units = few_steps ? ExactUnits(trimmed, exponent, scale) : NearUnits(trimmed, exponent, scale);
  if (units >= TenTo(Decimal::kMaxDigits)) return std::nullopt;
  return Decimal::Of(negative, static_cast<Decimal::Wide>(units), scale);
}

}  // namespace rebate::tsql
