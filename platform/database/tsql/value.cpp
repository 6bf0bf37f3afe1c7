#include "platform/database/tsql/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/database/tsql/moment.h"
#include "platform/database/tsql/utf8.h"

namespace rebate::tsql {
namespace {

constexpr double kLargestExact = 9007199254740992.0;  // 2^53
constexpr int kDigits = 15;

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

[[noreturn]] void RefuseText(std::string_view text, const DataType& from, const DataType& to) {
  const Text source(MessageName(from.kind));
  if (IsExactNumber(to.kind) || IsFloat(to.kind)) {
    Refuse("Error converting data type " + source + " to " + Text(MessageName(to.kind)) + ".");
  }
  if (to.kind == TypeKind::DateTime) {
    Refuse("Conversion failed when converting date and/or time from character string.");
  }
  Refuse("Conversion failed when converting the " + source + " value '" + Text(text) + "' to data type " +
         Text(MessageName(to.kind)) + ".");
}

[[noreturn]] void RefuseOverflow(const DataType& from, const DataType& to) {
  if (IsExactNumber(to.kind)) {
    Refuse("Arithmetic overflow error converting " + Text(MessageName(from.kind)) + " to data type " +
           Text(MessageName(to.kind)) + ".");
  }
  Refuse("Arithmetic overflow error converting expression to data type " + Text(MessageName(to.kind)) + ".");
}

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

std::string_view WithoutPlus(std::string_view text) {
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  return text;
}

template <typename Number>
std::errc Read(std::string_view text, Number& number) {
  text = WithoutPlus(text);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return error;
  return end == text.data() + text.size() ? std::errc() : std::errc::invalid_argument;
}

// A number in any of the server's spellings, for the question whether a text is one at all.
bool ReadsAsNumber(std::string_view text) {
  double number = 0;
  const char last = text.empty() ? ' ' : text.back();
  return (std::isdigit(static_cast<unsigned char>(last)) != 0 || last == '.') && Read(text, number) == std::errc();
}

Value IntegerFromText(std::string_view text, const DataType& from, const DataType& to, Purpose purpose) {
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) return Value::Of(std::int64_t{0});
  if (to.kind == TypeKind::Bit) {
    if (EqualsIgnoreCase(trimmed, "true")) return Value::Of(std::int64_t{1});
    if (EqualsIgnoreCase(trimmed, "false")) return Value::Of(std::int64_t{0});
  }
  std::int64_t number = 0;
  const std::errc error = Read(trimmed, number);
  if (error == std::errc::invalid_argument) {
    if (purpose == Purpose::Match && !ReadsAsNumber(trimmed)) return {};
    RefuseText(text, from, to);
  }
  if (to.kind == TypeKind::Bit) return Value::Of(std::int64_t{number != 0});
  const IntegerRange range = RangeOf(to.kind);
  if (error == std::errc::result_out_of_range || number < range.low || number > range.high) {
    Refuse("The conversion of the " + Text(MessageName(from.kind)) + " value '" + Text(text) + "' overflowed an " +
           Text(MessageName(to.kind)) + " column.");
  }
  return Value::Of(number);
}

Value IntegerFromNumber(const Value& value, const DataType& from, const DataType& to) {
  if (to.kind == TypeKind::Bit) return Value::Of(std::int64_t{value.AsDouble() != 0});
  const IntegerRange range = RangeOf(to.kind);
  std::int64_t number = value.integer;
  if (value.kind == Value::Kind::Real) {
    // A number that stands for a decimal is cut where its fifteen digits say, not where its last bit does.
    const double cut = std::trunc(RoundHalfAway(value.real, 9));
    if (!(std::abs(cut) < 9.2e18)) RefuseOverflow(from, to);
    number = static_cast<std::int64_t>(cut);
  }
  if (number >= range.low && number <= range.high) return Value::Of(number);
  if (to.kind == TypeKind::TinyInt || to.kind == TypeKind::SmallInt) {
    Refuse("Arithmetic overflow error for data type " + Text(MessageName(to.kind)) +
           ", value = " + std::to_string(number) + ".");
  }
  RefuseOverflow(from, to);
}

Value ExactFromDouble(double number, const DataType& from, const DataType& to) {
  const int scale = ScaleOf(to);
  if (scale != kAnyScale) number = RoundHalfAway(number, scale);
  const int integer_digits = to.kind == TypeKind::Money ? 15 : to.precision - std::max(scale, 0);
  if (!(std::abs(number) < std::pow(10.0, integer_digits))) RefuseOverflow(from, to);
  if (number == std::trunc(number) && std::abs(number) < kLargestExact) {
    return Value::Of(static_cast<std::int64_t>(number));
  }
  return Value::Of(number);
}

Value NumberFromText(std::string_view text, const DataType& from, const DataType& to, Purpose purpose) {
  const std::string_view trimmed = Trim(text);
  const bool exponent = trimmed.find_first_of("eE") != std::string_view::npos;
  double number = 0;
  if (trimmed.empty() && to.kind != TypeKind::Decimal) return Value::Of(std::int64_t{0});
  if (!ReadsAsNumber(trimmed) || (exponent && to.kind == TypeKind::Decimal)) {
    if (purpose == Purpose::Match && !ReadsAsNumber(trimmed)) return {};
    RefuseText(text, from, to);
  }
  Read(trimmed, number);
  return IsFloat(to.kind) ? Value::Of(number) : ExactFromDouble(number, from, to);
}

Value ToNumber(const Value& value, const DataType& from, const DataType& to, Purpose purpose) {
  if (from.kind == TypeKind::DateTime) {
    const auto moment = ParseMoment(value.text);
    const double days = moment ? ToDays(*moment) : 0;
    // A day counts from noon on where a time becomes a whole number.
    return ToNumber(Value::Of(IsInteger(to.kind) ? std::floor(days + 0.5) : days), FloatType(), to, purpose);
  }
  if (IsInteger(to.kind)) {
    return value.kind == Value::Kind::Text ? IntegerFromText(value.text, from, to, purpose)
                                           : IntegerFromNumber(value, from, to);
  }
  if (value.kind == Value::Kind::Text) return NumberFromText(value.text, from, to, purpose);
  if (IsFloat(to.kind)) {
    const double number = value.AsDouble();
    return Value::Of(to.kind == TypeKind::Real ? static_cast<double>(static_cast<float>(number)) : number);
  }
  return ExactFromDouble(value.AsDouble(), from, to);
}

Value ToDateTime(const Value& value, const DataType& from, const DataType& to, Text& scratch) {
  std::optional<Moment> moment;
  if (value.kind == Value::Kind::Text) {
    moment = ParseMoment(value.text);
    if (!moment) RefuseText(value.text, from, to);
  } else {
    const double days = value.AsDouble();
    if (std::abs(days) < 4e6) moment = FromDays(days);
    if (!moment || !InRange(*moment)) RefuseOverflow(from, to);
  }
  scratch = FormatMoment(*moment);
  return Value::Of(std::string_view(scratch));
}

Text FloatText(double number) {
  char text[40];
  const int length = std::snprintf(text, sizeof text, "%.6g", number);
  Text plain(text, static_cast<std::size_t>(length));
  // The server writes an exponent of three digits.
  const std::size_t exponent = plain.find('e');
  if (exponent != Text::npos)
    plain.insert(exponent + 2, 3 - std::min<std::size_t>(3, plain.size() - exponent - 2), '0');
  return plain;
}

std::string_view NumberAsText(const Value& value, const DataType& from, Text& scratch) {
  if (IsFloat(from.kind)) {
    scratch = FloatText(value.AsDouble());
  } else if (from.kind == TypeKind::Money) {
    scratch = DecimalText(value, 2);
  } else {
    scratch = DecimalText(value, IsInteger(from.kind) ? 0 : ScaleOf(from));
  }
  return scratch;
}

Value FitText(std::string_view text, const DataType& from, const DataType& to, Purpose purpose, Text& scratch) {
  if (to.length == DataType::kMaxLength) return Value::Of(text);
  const std::size_t limit = static_cast<std::size_t>(to.length);
  const bool national = IsNational(to.kind);
  const bool fixed = to.kind == TypeKind::Char || to.kind == TypeKind::NChar;
  if (text.size() <= limit && !fixed) return Value::Of(text);
  const std::size_t units = CountUnits(text, national);
  if (units > limit) {
    if (!IsText(from.kind) && from.kind != TypeKind::DateTime) {
      if (IsInteger(from.kind) && !national && purpose == Purpose::Cast) return Value::Of(std::string_view("*"));
      RefuseOverflow(from, to);
    }
    const std::string_view first = FirstUnits(text, limit, national);
    if (purpose == Purpose::Assign && !WithoutTrailingBlanks(text.substr(first.size())).empty()) {
      Refuse("String or binary data would be truncated.");
    }
    return Value::Of(first);
  }
  if (!fixed || units == limit) return Value::Of(text);
  scratch.assign(Text(text));
  scratch.append(limit - units, ' ');
  return Value::Of(std::string_view(scratch));
}

Value ToTextType(const Value& value, const DataType& from, const DataType& to, Purpose purpose, Text& scratch,
                 int style) {
  std::string_view text = value.text;
  if (from.kind == TypeKind::DateTime) {
    const auto moment = ParseMoment(value.text);
    if (!moment) RefuseText(value.text, from, DateTimeType());
    auto formatted = FormatMoment(*moment, style);
    if (!formatted) {
      Refuse(std::to_string(style) +
             " is not a valid style number when converting from datetime to a character string.");
    }
    scratch = std::move(*formatted);
    text = scratch;
  } else if (value.kind != Value::Kind::Text) {
    text = NumberAsText(value, from, scratch);
  }
  return FitText(text, from, to, purpose, scratch);
}

}  // namespace

Value Value::Of(std::int64_t integer) {
  Value value;
  value.kind = Kind::Integer;
  value.integer = integer;
  return value;
}

Value Value::Of(double real) {
  Value value;
  value.kind = Kind::Real;
  value.real = real;
  return value;
}

Value Value::Of(std::string_view text) {
  Value value;
  value.kind = Kind::Text;
  value.text = text;
  return value;
}

double RoundHalfAway(double number, int scale) {
  static constexpr std::array<double, 23> kPowers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  if (scale < 0) {
    const double power = kPowers[static_cast<std::size_t>(std::min(-scale, 22))];
    return RoundHalfAway(number / power, 0) * power;
  }
  const double power = kPowers[static_cast<std::size_t>(std::min(scale, 22))];
  const double scaled = number * power;
  if (!(std::abs(scaled) < kLargestExact)) return number;
  // A number written with a half at this digit may lie a bit below it in binary.
  return std::round(scaled + std::copysign(std::abs(scaled) * 4e-16, scaled)) / power;
}

Value Convert(const Value& value, const DataType& from, const DataType& to, Purpose purpose, Text& scratch, int style) {
  if (value.IsNull()) return value;
  if (IsText(to.kind)) return ToTextType(value, from, to, purpose, scratch, style);
  if (to.kind != TypeKind::DateTime) return ToNumber(value, from, to, purpose);
  return from.kind == TypeKind::DateTime ? value : ToDateTime(value, from, to, scratch);
}

DataType LiteralType(LiteralKind kind) {
  switch (kind) {
    case LiteralKind::Integer:
      return IntType();
    case LiteralKind::Decimal:
      return DecimalType(38, kAnyScale);
    case LiteralKind::Float:
      return FloatType();
    case LiteralKind::String:
      return TextType(TypeKind::VarChar, DataType::kMaxLength);
    case LiteralKind::NationalString:
      break;
  }
  return TextType(TypeKind::NVarChar, DataType::kMaxLength);
}

Value LiteralValue(const LiteralToken& literal, bool negated, const DataType& to, Purpose purpose, Text& scratch) {
  const DataType from = LiteralType(literal.kind);
  if (IsText(from.kind)) {
    if (!literal.has_doubled_quotes) return Convert(Value::Of(literal.text), from, to, purpose, scratch);
    Text single = LiteralText(literal);
    const Value value = Convert(Value::Of(std::string_view(single)), from, to, purpose, scratch);
    if (value.kind != Value::Kind::Text || value.text.data() == scratch.data()) return value;
    const std::size_t length = value.text.size();
    scratch = std::move(single);
    return Value::Of(std::string_view(scratch).substr(0, length));
  }
  if (IsText(to.kind) && literal.kind != LiteralKind::Float) {
    // The digits as they are written.
    std::string_view digits = literal.text;
    while (digits.size() > 1 && digits[0] == '0' && digits[1] != '.') digits.remove_prefix(1);
    if (digits.ends_with('.')) digits.remove_suffix(1);
    scratch = negated ? "-" : "";
    if (digits.starts_with('.') || digits.empty()) scratch += '0';
    scratch += digits;
    return FitText(scratch, from, to, purpose, scratch);
  }
  if (literal.kind == LiteralKind::Integer) {
    std::int64_t integer = 0;
    Read(literal.text, integer);
    if (to.kind == TypeKind::Int) [[likely]]
      return Value::Of(negated ? -integer : integer);
    return Convert(Value::Of(negated ? -integer : integer), from, to, purpose, scratch);
  }
  std::int64_t whole = 0;
  if (literal.kind == LiteralKind::Decimal && Read(literal.text, whole) == std::errc()) {
    return Convert(Value::Of(negated ? -whole : whole), from, to, purpose, scratch);
  }
  double number = 0;
  // Of the numbers outside a float's range, those too small are 0.
  const bool outside = Read(literal.text, number) == std::errc::result_out_of_range;
  if (outside && literal.text.find('-') == std::string_view::npos) {
    Refuse("The floating point value '" + Text(literal.text) +
           "' is out of the range of computer representation (8 bytes).");
  }
  return Convert(Value::Of(negated ? -number : number), from, to, purpose, scratch);
}

Text DecimalText(const Value& value, int scale, bool trimmed) {
  char text[400];
  if (value.kind == Value::Kind::Integer) {
    const auto end = std::to_chars(text, text + 24, value.integer).ptr;
    Text digits(text, end);
    if (scale > 0 && !trimmed) digits.append(1, '.').append(static_cast<std::size_t>(scale), '0');
    return digits;
  }
  const double magnitude = std::abs(value.real);
  const int integer_digits = magnitude < 1 ? 0 : static_cast<int>(std::floor(std::log10(magnitude))) + 1;
  const int leading_zeros =
      magnitude > 0 && magnitude < 0.1 ? static_cast<int>(-std::floor(std::log10(magnitude))) - 1 : 0;
  int fraction = std::clamp(kDigits - integer_digits + leading_zeros, 0, 30);
  double number = value.real;
  if (scale != kAnyScale) {
    fraction = std::min(fraction, scale);
    number = RoundHalfAway(number, fraction);
  }
  std::size_t length = static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.*f", fraction, number));
  if ((trimmed || scale == kAnyScale) && fraction > 0) {
    while (text[length - 1] == '0') --length;
    if (text[length - 1] == '.') --length;
  }
  return Text(text, length) == "-0" ? Text("0") : Text(text, length);
}

bool IsNumberText(std::string_view text) {
  std::string_view trimmed = Trim(text);
  if (!trimmed.empty() && trimmed.front() == '$') trimmed.remove_prefix(1);
  return ReadsAsNumber(trimmed);
}

Text SqlString(std::string_view text) {
  Text sql = "'";
  for (const char c : text) {
    sql += c;
    if (c == '\'') sql += c;
  }
  return sql += '\'';
}

Text SqlConstant(const Value& value) {
  switch (value.kind) {
    case Value::Kind::Null:
      return "NULL";
    case Value::Kind::Integer:
      return std::to_string(value.integer);
    case Value::Kind::Real: {
      char text[40];
      std::snprintf(text, sizeof text, "%.17g", value.real);
      const Text digits(text);
      return digits.find_first_of(".en") == Text::npos ? digits + ".0" : digits;
    }
    case Value::Kind::Text:
      break;
  }
  return SqlString(value.text);
}

std::int64_t PackType(const DataType& type) {
  return static_cast<std::int64_t>(type.kind) | (type.scale + 1LL) << 8 |
         static_cast<std::int64_t>(type.precision) << 16 | (type.length + 1LL) << 24;
}

DataType UnpackType(std::int64_t packed) {
  return {static_cast<TypeKind>(packed & 0xFF), static_cast<int>(packed >> 24) - 1,
          static_cast<int>(packed >> 16 & 0xFF), static_cast<int>(packed >> 8 & 0xFF) - 1};
}

}  // namespace rebate::tsql
