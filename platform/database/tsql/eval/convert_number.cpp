#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/database/tsql/eval/convert_steps.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"
#include "platform/values/text.h"

namespace rebate::tsql {
namespace {

using Outcome = FloatReading::Outcome;

struct IntegerRange {
  std::int64_t low, high;
};

IntegerRange RangeOf(TypeKind kind) {
  switch (kind) {
    case TypeKind::TinyInt:
      return {0, 255};
    case TypeKind::SmallInt:
      return {-32768, 32767};
    case TypeKind::BigInt:
      return {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    default:
      return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
  }
}

// What money keeps in its units of a ten-thousandth.
IntegerRange UnitsOf(TypeKind kind) {
  return RangeOf(kind == TypeKind::SmallMoney ? TypeKind::Int : TypeKind::BigInt);
}

// A number in a float's spelling, and more than the letters of one.
bool ReadsAsNumber(std::string_view text) {
  return ReadFloat(text).outcome != Outcome::NoNumber;
}

// A text in a comparison that is no number at all equals no number.
bool MatchesNothing(std::string_view text, const Conversion& conversion) {
  return conversion.purpose == Purpose::Match && !ReadsAsNumber(text);
}

[[noreturn]] void RefuseTypeText(const Conversion& conversion) {
  Refuse("Error converting data type " + conversion.FromName() + " to " + conversion.ToName() + ".");
}

// ---- integers ----

[[noreturn]] void RefuseIntegerText(std::string_view text, const Conversion& conversion) {
  if (conversion.to.kind == TypeKind::BigInt) RefuseTypeText(conversion);
  Refuse("Conversion failed when converting the " + conversion.FromName() + " value '" + Text(text) +
         "' to data type " + conversion.ToName() + ".");
}

[[noreturn]] void RefuseLargeText(std::string_view text, const Conversion& conversion) {
  const Text start = "The conversion of the " + conversion.FromName() + " value '" + Text(text) + "' overflowed an ";
  switch (conversion.to.kind) {
    case TypeKind::TinyInt:
      Refuse(start + "INT1 column. Use a larger integer column.");
    case TypeKind::SmallInt:
      Refuse(start + "INT2 column. Use a larger integer column.");
    case TypeKind::BigInt:
      RefuseTypeText(conversion);
    default:
      Refuse(start + "int column.");
  }
}

Value IntegerFromText(std::string_view text, const Conversion& conversion) {
  const bool bit = conversion.to.kind == TypeKind::Bit;
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) return Value::Of(std::int64_t{0});
  if (bit && EqualsIgnoreCase(trimmed, "true")) return Value::OfBool(true);
  if (bit && EqualsIgnoreCase(trimmed, "false")) return Value::OfBool(false);
  const IntegerReading reading = ReadInteger(trimmed);
  if (reading.outcome == Outcome::NoNumber) {
    if (MatchesNothing(trimmed, conversion)) return {};
    RefuseIntegerText(text, conversion);
  }
  const IntegerRange range = RangeOf(conversion.to.kind);
  if (bit && reading.outcome == Outcome::Ok) return Value::OfBool(reading.number != 0);
  if (reading.outcome == Outcome::Overflow || reading.number < range.low || reading.number > range.high) {
    RefuseLargeText(text, conversion);
  }
  return Value::Of(reading.number);
}

Value IntegerFromInteger(std::int64_t number, const Conversion& conversion) {
  if (conversion.to.kind == TypeKind::Bit) return Value::OfBool(number != 0);
  const IntegerRange range = RangeOf(conversion.to.kind);
  if (number >= range.low && number <= range.high) return Value::Of(number);
  if (conversion.to.kind == TypeKind::Int) RefuseExpression(conversion);
  Refuse("Arithmetic overflow error for data type " + conversion.ToName() + ", value = " + std::to_string(number) +
         ".");
}

Value IntegerFromDecimal(const Decimal& decimal, const Conversion& conversion) {
  if (conversion.to.kind == TypeKind::Bit) return Value::OfBool(!decimal.IsZero());
  // Money is rounded, a decimal is cut.
  const auto whole =
      decimal.WithScale(0, IsMoney(conversion.from.kind) ? Decimal::Digits::Round : Decimal::Digits::Cut);
  const std::optional<std::int64_t> found = whole ? whole->ToInteger() : std::nullopt;
  const std::int64_t number = found.value_or(0);
  const IntegerRange range = RangeOf(conversion.to.kind);
  if (!found || number < range.low || number > range.high) {
    if (conversion.to.kind == TypeKind::Int) RefuseExpression(conversion);
    RefuseOverflow(conversion);
  }
  return Value::Of(number);
}

Value IntegerFromFloat(double number, const Conversion& conversion) {
  constexpr double kBeyond = 9223372036854775808.0;  // 2^63
  if (conversion.to.kind == TypeKind::Bit) return Value::OfBool(number != 0);
  if (!(number >= -kBeyond && number < kBeyond)) RefuseFloat(conversion, number);
  const auto cut = static_cast<std::int64_t>(number);
  const IntegerRange range = RangeOf(conversion.to.kind);
  if (cut < range.low || cut > range.high) RefuseFloat(conversion, number);
  return Value::Of(cut);
}

// A day counts from noon on.
Value IntegerFromDate(const Value& value, const Conversion& conversion) {
  const Moment moment = MomentOf(value);
  return IntegerFromInteger(moment.day + (moment.ticks * 2 >= kTicksADay ? 1 : 0), conversion);
}

// ---- exact numbers ----

// The decimal in the type's scale; nothing where it doesn't fit.
std::optional<Decimal> Fitted(const Decimal& decimal, const DataType& to) {
  if (IsMoney(to.kind)) {
    auto amount = decimal.WithScale(4);
    if (!amount) return std::nullopt;
    const auto units = Decimal::Of(amount->negative(), amount->units(), 0).ToInteger();
    const IntegerRange range = UnitsOf(to.kind);
    return units && *units >= range.low && *units <= range.high ? amount : std::nullopt;
  }
  auto rounded = decimal.WithScale(to.scale);
  return rounded && rounded->IntegerDigits() <= to.precision - to.scale ? rounded : std::nullopt;
}

Value ExactFrom(const std::optional<Decimal>& decimal, const Conversion& conversion) {
  const std::optional<Decimal> fitted = decimal ? Fitted(*decimal, conversion.to) : std::nullopt;
  if (!fitted) RefuseOverflow(conversion);
  return Value::Of(*fitted);
}

// Digits beyond those by which a number of `scale` is rounded, which a decimal may not have room for, are left out.
std::string_view WithoutFarDigits(std::string_view digits, int scale) {
  const std::size_t point = digits.find('.');
  if (point == std::string_view::npos) return digits;
  const std::string_view rest = digits.substr(point + 1);
  if (rest.find_first_not_of("0123456789") != std::string_view::npos) return digits;
  return digits.substr(0, point + 1 + std::min(rest.size(), static_cast<std::size_t>(scale) + 1));
}

bool IsPlainNumber(std::string_view text) {
  return ReadsAsNumber(text) && text.find_first_of("eE") == std::string_view::npos;
}

Value DecimalFromText(std::string_view text, const Conversion& conversion) {
  const std::string_view trimmed = Trim(text);
  if (const std::optional<Decimal> plain = Decimal::Parse(trimmed)) return ExactFrom(plain, conversion);
  if (!IsPlainNumber(trimmed)) {
    if (MatchesNothing(trimmed, conversion)) return {};
    RefuseTypeText(conversion);
  }
  return ExactFrom(Decimal::Parse(WithoutFarDigits(trimmed, conversion.to.scale)), conversion);
}

// The signs that may stand beside an amount: $ cent pound currency yen rupee baht dong won euro, and wide ones.
bool IsCurrencySign(char32_t c) {
  return c == '$' || (c >= 0xA2 && c <= 0xA5) || c == 0x9F2 || c == 0x9F3 || c == 0xE3F || c == 0x17DB ||
         (c >= 0x20A0 && c <= 0x20B1) || c == 0xFDFC || c == 0xFE69 || c == 0xFF04 || c == 0xFFE0 || c == 0xFFE1 ||
         c == 0xFFE5 || c == 0xFFE6;
}

// An amount without its currency sign and the commas between its digits.
Text PlainAmount(std::string_view text) {
  Text plain;
  bool sign_seen = false;
  const char* at = text.data();
  for (const char* const end = at + text.size(); at < end;) {
    const char32_t c = NextCodePoint(at, end);
    const bool started = plain.find_first_of("0123456789.") != Text::npos;
    if (c == ',' && started) continue;
    if (!started && !sign_seen && IsCurrencySign(c)) {
      sign_seen = true;
    } else if (c != ' ' || started) {
      AppendCodePoint(plain, c);
    }
  }
  if (sign_seen && plain.find_first_not_of("+-") == Text::npos) plain += '0';
  return plain;
}

Value MoneyFromText(std::string_view text, const Conversion& conversion) {
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) return Value::Of(Decimal::Of(false, 0, 4));
  const Text plain = PlainAmount(trimmed);
  if (!IsPlainNumber(plain)) {
    if (MatchesNothing(plain, conversion)) return {};
    Refuse("Cannot convert a char value to money. The char value has incorrect syntax.");
  }
  return ExactFrom(Decimal::Parse(WithoutFarDigits(plain, 4)), conversion);
}

// ---- floats ----

Value FloatFrom(double number, const Conversion& conversion) {
  if (conversion.to.kind == TypeKind::Float) return Value::Of(number);
  if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) RefuseFloat(conversion, number);
  return Value::Of(static_cast<double>(static_cast<float>(number)));
}

Value FloatFromText(std::string_view text, const Conversion& conversion) {
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) return Value::Of(0.0);
  const FloatReading reading = ReadFloat(trimmed);
  if (reading.outcome == Outcome::NoNumber && conversion.purpose == Purpose::Match) return {};
  if (reading.outcome != Outcome::Ok) RefuseTypeText(conversion);
  return FloatFrom(reading.number, conversion);
}

}  // namespace

Value ToInteger(const Value& value, const Conversion& conversion) {
  if (IsDate(conversion.from.kind)) return IntegerFromDate(value, conversion);
  switch (value.kind) {
    case Value::Kind::Integer:
      return IntegerFromInteger(value.integer, conversion);
    case Value::Kind::Real:
      return IntegerFromFloat(value.real, conversion);
    case Value::Kind::Decimal:
      return IntegerFromDecimal(value.decimal, conversion);
    default:
      return IntegerFromText(value.text, conversion);
  }
}

Value ToExactNumber(const Value& value, const Conversion& conversion) {
  if (IsDate(conversion.from.kind)) return ExactFrom(DaysOf(value), conversion);
  switch (value.kind) {
    case Value::Kind::Integer:
      return ExactFrom(Decimal(value.integer), conversion);
    case Value::Kind::Real:
      return ExactFrom(Decimal::FromDouble(value.real), conversion);
    case Value::Kind::Decimal:
      return ExactFrom(value.decimal, conversion);
    default:
      return IsMoney(conversion.to.kind) ? MoneyFromText(value.text, conversion)
                                         : DecimalFromText(value.text, conversion);
  }
}

Value ToFloat(const Value& value, const Conversion& conversion) {
  if (IsDate(conversion.from.kind)) return FloatFrom(ToDays(MomentOf(value)), conversion);
  switch (value.kind) {
    case Value::Kind::Integer:
      return FloatFrom(static_cast<double>(value.integer), conversion);
    case Value::Kind::Real:
      return FloatFrom(value.real, conversion);
    case Value::Kind::Decimal:
      return FloatFrom(value.decimal.ToDouble(), conversion);
    default:
      return FloatFromText(value.text, conversion);
  }
}

bool IsNumberText(std::string_view text) {
  return ReadsAsNumber(PlainAmount(Trim(text)));
}

}  // namespace rebate::tsql
