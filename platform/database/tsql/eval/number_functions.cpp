#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>

#include "platform/database/tsql/eval/convert.h"
#include "platform/database/tsql/eval/function.h"
#include "platform/database/tsql/eval/number_result.h"
#include "platform/database/tsql/eval/power.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

// A float's digits as they are read, where a decimal holds them.
std::optional<Decimal> DigitsOf(double number) {
  return std::isfinite(number) ? Decimal::FromDouble(number) : std::nullopt;
}

// A float brought into the type of the result: an integer is cut, a decimal rounded.
Value FromReal(double number, const DataType& type) {
  if (std::isnan(number)) RefuseFloatOperation();
  if (IsFloat(type.kind)) return RealResult(number, type);
  const auto digits = DigitsOf(number);
  if (!IsInteger(type.kind)) return DecimalResult(digits, type);
  const auto whole = digits ? digits->ToInteger() : std::nullopt;
  if (!whole) RefuseOverflow(type);
  return IntegerResult(*whole, type);
}

// ---- signs and whole numbers ----

Value Abs(const Invocation& call) {
  const Value& number = call[0];
  if (number.kind == Value::Kind::Real) return Value::Of(std::abs(number.real));
  if (number.kind == Value::Kind::Decimal) {
    return DecimalResult(number.decimal.negative() ? number.decimal.Negated() : number.decimal, call.result);
  }
  if (number.integer == std::numeric_limits<std::int64_t>::min()) RefuseOverflow(call.result);
  return IntegerResult(std::abs(number.integer), call.result);
}

Value Sign(const Invocation& call) {
  const Value& number = call[0];
  if (number.kind == Value::Kind::Real) return Value::Of(number.real > 0 ? 1.0 : number.real < 0 ? -1.0 : 0.0);
  if (number.kind == Value::Kind::Integer) return Value::Of(std::int64_t{(number.integer > 0) - (number.integer < 0)});
  const Decimal sign(number.decimal.IsZero() ? 0 : number.decimal.negative() ? -1 : 1);
  return DecimalResult(sign, call.result);
}

// The next whole number upwards, or downwards.
template <bool kUpwards>
Value Whole(const Invocation& call) {
  const Value& number = call[0];
  if (number.kind == Value::Kind::Integer) return number;
  if (number.kind == Value::Kind::Real) return Value::Of(kUpwards ? std::ceil(number.real) : std::floor(number.real));
  auto whole = number.decimal.WithScale(0, Decimal::Digits::Cut);
  if (*whole != number.decimal && number.decimal.negative() != kUpwards) {
    whole = Decimal::Add(*whole, Decimal(kUpwards ? 1 : -1), 0);
  }
  return DecimalResult(whole, call.result);
}

// ---- round ----

double RoundReal(double number, int places, Decimal::Digits digits) {
  const auto decimal = DigitsOf(number);
  const auto rounded = decimal ? decimal->RoundedTo(places, digits) : std::nullopt;
  if (rounded) return rounded->ToDouble();
  // Too large for a decimal, so it has no fraction, and its last digits are none of its own.
  if (places >= 0) return number;
  const double unit = std::pow(10.0, -places);
  if (std::isinf(unit)) return 0;
  return (digits == Decimal::Digits::Cut ? std::trunc(number / unit) : std::round(number / unit)) * unit;
}

Value Round(const Invocation& call) {
  constexpr std::int64_t kFarthest = 400;  // beyond the digits of every type
  const Value& number = call[0];
  const int places = static_cast<int>(std::clamp<std::int64_t>(call.Integer(1), -kFarthest, kFarthest));
  const bool cut = call.size() > 2 && call.Integer(2) != 0;
  const auto digits = cut ? Decimal::Digits::Cut : Decimal::Digits::Round;
  if (number.kind == Value::Kind::Real) return RealResult(RoundReal(number.real, places, digits), call.result);
  const bool whole = number.kind == Value::Kind::Integer;
  if (whole && places >= 0) return IntegerResult(number.integer, call.result);
  const auto rounded = (whole ? Decimal(number.integer) : number.decimal).RoundedTo(places, digits);
  if (!whole) return DecimalResult(rounded, call.result);
  const auto integer = rounded->ToInteger();
  if (!integer) RefuseOverflow(call.result);
  return IntegerResult(*integer, call.result);
}

// ---- powers ----

double AsReal(const Value& number) {
  switch (number.kind) {
    case Value::Kind::Integer:
      return static_cast<double>(number.integer);
    case Value::Kind::Decimal:
      return number.decimal.ToDouble();
    default:
      return number.real;
  }
}

// The integer that a number is, where it is one.
std::optional<std::int64_t> AsWhole(const Value& number) {
  if (number.kind == Value::Kind::Integer) return number.integer;
  const auto decimal = number.kind == Value::Kind::Real ? DigitsOf(number.real) : number.decimal;
  const auto whole = decimal ? decimal->ToInteger() : std::nullopt;
  return whole && Decimal(*whole) == *decimal ? whole : std::nullopt;
}

Value PowerFunction(const Invocation& call) {
  const Value& base = call[0];
  const double exponent = AsReal(call[1]);
  const auto steps = AsWhole(call[1]);
  if (AsReal(base) == 0 && exponent < 0) RefuseFloatOperation();
  if (base.kind == Value::Kind::Real || !steps) return FromReal(std::pow(AsReal(base), exponent), call.result);
  if (base.kind == Value::Kind::Decimal) {
    const int scale = call.result.kind == TypeKind::Decimal ? call.result.scale : 4;
    return DecimalResult(Power(base.decimal, *steps, scale), call.result);
  }
  // Of an integer's negative powers only those of one and minus one have anything in front of the point.
  if (*steps < 0 && base.integer != 1 && base.integer != -1) return Value::Of(std::int64_t{0});
  const auto power = Power(Decimal(base.integer), *steps, 0);
  const auto integer = power ? power->ToInteger() : std::nullopt;
  if (!integer) RefuseOverflow(call.result);
  return IntegerResult(*integer, call.result);
}

// ---- functions of floats ----

template <double (*Function)(double)>
Value OfReal(const Invocation& call) {
  return RealResult(Function(call.Real(0)), call.result);
}

double SquareOf(double number) {
  return number * number;
}
double CotangentOf(double angle) {
  if (angle == 0) RefuseFloatOperation();
  return 1 / std::tan(angle);
}
double LogarithmOf(double number) {
  if (number <= 0) RefuseFloatOperation();
  return std::log(number);
}
double TenLogarithmOf(double number) {
  if (number <= 0) RefuseFloatOperation();
  return std::log10(number);
}

Value Log(const Invocation& call) {
  const double logarithm = LogarithmOf(call.Real(0));
  if (call.size() == 1) return RealResult(logarithm, call.result);
  const double base = LogarithmOf(call.Real(1));
  if (base == 0) RefuseFloatOperation();
  return RealResult(logarithm / base, call.result);
}

Value Atn2(const Invocation& call) {
  if (call.Real(0) == 0 && call.Real(1) == 0) RefuseFloatOperation();
  return RealResult(std::atan2(call.Real(0), call.Real(1)), call.result);
}

constexpr double kPi = 3.14159265358979323846;
// 180 / pi, with the digits that a decimal can have.
constexpr std::string_view kDegreesOfOne = "57.295779513082320876798154814105170332";

Value Pi(const Invocation&) {
  return Value::Of(kPi);
}

// Angles, of integers too: their result is cut.
template <std::optional<Decimal> (*Exactly)(const Decimal&, int scale), double (*Nearly)(double)>
Value Angle(const Invocation& call) {
  const Value& angle = call[0];
  if (angle.kind == Value::Kind::Real) return RealResult(Nearly(angle.real), call.result);
  if (angle.kind == Value::Kind::Integer) {
    constexpr int kGuardPlaces = 10;
    const auto exact = Exactly(Decimal(angle.integer), kGuardPlaces);
    const auto whole = exact ? exact->ToInteger() : std::nullopt;
    if (!whole) RefuseOverflow(call.result);
    return IntegerResult(*whole, call.result);
  }
  const int scale = call.result.kind == TypeKind::Decimal ? call.result.scale : 4;
  return DecimalResult(Exactly(angle.decimal, scale), call.result);
}

std::optional<Decimal> ToDegrees(const Decimal& radians, int scale) {
  return Decimal::Multiply(radians, *Decimal::Parse(kDegreesOfOne), scale);
}
std::optional<Decimal> ToRadians(const Decimal& degrees, int scale) {
  return Decimal::Divide(degrees, *Decimal::Parse(kDegreesOfOne), scale, Decimal::Digits::Round);
}
double RealToDegrees(double radians) {
  return radians * 180 / kPi;
}
double RealToRadians(double degrees) {
  return degrees * kPi / 180;
}

// ---- chance ----

std::mt19937_64& Generator() {
  static_assert(std::is_trivially_destructible_v<std::mt19937_64>);  // a thread's end runs no code of ours
  thread_local std::mt19937_64 generator{std::random_device{}()};
  return generator;
}

// A seed starts the numbers anew, the same ones for the same seed.
Value Rand(const Invocation& call) {
  if (call.size() > 0) Generator().seed(static_cast<std::uint64_t>(call.Integer(0)));
  return Value::Of(std::uniform_real_distribution<double>(0, 1)(Generator()));
}

Value NewId(const Invocation& call) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  Text id = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  for (char& c : id) {
    const std::size_t digit = Generator()() & 15;
    if (c == 'x') c = kDigits[digit];
    if (c == 'y') c = kDigits[8 | (digit & 3)];
  }
  return Value::Of(call.pool.Keep(std::move(id)));
}

// A mark of a number, without any digit, counts as a number to a server.
bool IsNumberMark(std::string_view text) {
  return text.size() == 1 && std::string_view("+-.,$").find(text.front()) != std::string_view::npos;
}

// A number is one, a date isn't.
Value IsNumeric(const Invocation& call) {
  if (call[0].IsNull()) return Value::OfBool(false);
  const TypeKind kind = call.types[0].kind;
  if (!IsText(kind)) return Value::OfBool(IsNumber(kind));
  return Value::OfBool(IsNumberMark(Trim(call.TextAt(0))) || IsNumberText(call.TextAt(0)));
}

constexpr Function kFunctions[] = {
    {"abs", Abs},
    {"sign", Sign},
    {"ceiling", Whole<true>},
    {"floor", Whole<false>},
    {"round", Round},
    {"power", PowerFunction},
    {"square", OfReal<SquareOf>},
    {"sqrt", OfReal<std::sqrt>},
    {"exp", OfReal<std::exp>},
    {"log", Log},
    {"log10", OfReal<TenLogarithmOf>},
    {"sin", OfReal<std::sin>},
    {"cos", OfReal<std::cos>},
    {"tan", OfReal<std::tan>},
    {"cot", OfReal<CotangentOf>},
    {"asin", OfReal<std::asin>},
    {"acos", OfReal<std::acos>},
    {"atan", OfReal<std::atan>},
    {"atn2", Atn2},
    {"pi", Pi},
    {"degrees", Angle<ToDegrees, RealToDegrees>},
    {"radians", Angle<ToRadians, RealToRadians>},
    {"rand", Rand, false, true},
    {"newid", NewId, false, true},
    {"isnumeric", IsNumeric, true},
};

}  // namespace

std::span<const Function> NumberFunctions() {
  return kFunctions;
}

}  // namespace rebate::tsql
