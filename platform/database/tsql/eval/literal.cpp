#include "platform/database/tsql/eval/literal.h"

#include <algorithm>
#include <charconv>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/values/number_text.h"
#include "platform/values/text.h"

namespace rebate::tsql {
namespace {

constexpr int kLongestText = 8000;      // of a varchar that isn't (max)
constexpr int kLongestNational = 4000;  // of an nvarchar

std::string_view WithoutLeadingZeros(std::string_view digits) {
  while (digits.size() > 1 && digits[0] == '0' && digits[1] != '.') digits.remove_prefix(1);
  return digits;
}

[[noreturn]] void RefuseDigits(std::string_view digits) {
  throw Error(
      database_error::kStatement, "",
      "The number '" + Text(digits) + "' is out of the range for numeric representation (maximum precision 38).");
}

Decimal DecimalOf(std::string_view digits, bool negated) {
  const auto number = Decimal::Parse(digits);
  if (!number) RefuseDigits(digits);
  return negated ? number->Negated() : *number;
}

double FloatOf(std::string_view digits) {
  double number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  // Of the numbers outside a float's range, those too small are 0.
  if (result.ec != std::errc::result_out_of_range) return number;
  if (digits.find('-') != std::string_view::npos) return 0;
  throw Error(
      database_error::kStatement, "",
      "The floating point value '" + Text(digits) + "' is out of the range of computer representation (8 bytes).");
}

std::int64_t IntegerOf(std::string_view digits, bool negated) {
  const std::int64_t integer = WholeNumber<std::int64_t>(digits).value_or(0);
  return negated ? -integer : integer;
}

Value TextValue(const LiteralToken& literal, const DataType& to, Purpose purpose, TextPool& pool) {
  const DataType from = LiteralType(literal.kind);
  const std::string_view text = literal.has_doubled_quotes ? pool.Keep(LiteralText(literal)) : literal.text;
  return Convert(Value::Of(text), from, to, purpose, pool);
}

}  // namespace

DataType LiteralType(LiteralKind kind) {
  switch (kind) {
    case LiteralKind::Integer:
      return IntType();
    case LiteralKind::Decimal:
      return DecimalType(Decimal::kMaxDigits, 0);
    case LiteralKind::Float:
      return FloatType();
    case LiteralKind::String:
      return TextType(TypeKind::VarChar, kLongestText);
    case LiteralKind::NationalString:
      break;
  }
  return TextType(TypeKind::NVarChar, kLongestNational);
}

DataType MeasuredType(const LiteralToken& literal) {
  switch (literal.kind) {
    case LiteralKind::Integer:
    case LiteralKind::Decimal: {
      const std::string_view digits = WithoutLeadingZeros(literal.text);
      const std::size_t point = std::min(digits.find('.'), digits.size());
      const std::size_t places = point == digits.size() ? 0 : digits.size() - point - 1;
      const std::size_t whole = digits.substr(0, point) == "0" && places > 0 ? 0 : point;
      if (whole + places > Decimal::kMaxDigits) RefuseDigits(literal.text);
      return DecimalType(static_cast<int>(std::max<std::size_t>(whole + places, 1)), static_cast<int>(places));
    }
    case LiteralKind::Float:
      return FloatType();
    case LiteralKind::String:
    case LiteralKind::NationalString:
      break;
  }
  DataType type = LiteralType(literal.kind);
  const Text text = LiteralText(literal);
  const bool national = literal.kind == LiteralKind::NationalString;
  const std::size_t length = CountUnits(text, national);
  type.length = length > static_cast<std::size_t>(type.length) ? DataType::kMaxLength
                                                               : static_cast<int>(std::max<std::size_t>(length, 1));
  return type;
}

Value LiteralValue(const LiteralToken& literal, bool negated, bool as_written, const DataType& to, Purpose purpose,
                   TextPool& pool) {
  if (literal.kind >= LiteralKind::String) return TextValue(literal, to, purpose, pool);
  if (literal.kind == LiteralKind::Float) {
    const double number = FloatOf(literal.text);
    return Convert(Value::Of(negated ? -number : number), FloatType(), to, purpose, pool);
  }
  if (literal.kind == LiteralKind::Integer && !as_written) {
    if (const auto number = LiteralInteger(literal, negated, to)) return Value::Of(*number);
    return Convert(Value::Of(IntegerOf(literal.text, negated)), IntType(), to, purpose, pool);
  }
  const Decimal number = DecimalOf(literal.text, negated);
  if (as_written) return Value::Of(number);
  return Convert(Value::Of(number), MeasuredType(literal), to, purpose, pool);
}

std::optional<std::int64_t> LiteralInteger(const LiteralToken& literal, bool negated, const DataType& to) {
  if (literal.kind != LiteralKind::Integer || to.kind != TypeKind::Int) return std::nullopt;
  std::int64_t number = 0;
  for (const char digit : literal.text) number = number * 10 + (digit - '0');
  return negated ? -number : number;
}

std::optional<std::string_view> LiteralKey(const LiteralToken& literal, const DataType& type) {
  const bool digits = literal.kind == LiteralKind::Integer || literal.kind == LiteralKind::Decimal;
  if (type.kind != TypeKind::Decimal || !digits) return std::nullopt;
  const std::string_view text = literal.text;
  const std::size_t whole = std::min(text.find('.'), text.size());
  const bool has_places = whole < text.size();
  const std::size_t places = has_places ? text.size() - whole - 1 : 0;
  const bool leading_zero = text.front() == '0' && whole > 1;
  const bool trailing_zero = has_places && (places == 0 || text.back() == '0');
  if (whole == 0 || leading_zero || trailing_zero) return std::nullopt;
  const bool fits = whole <= static_cast<std::size_t>(type.precision - type.scale) || text == "0";
  if (!fits || places > static_cast<std::size_t>(type.scale)) return std::nullopt;
  return text;
}

}  // namespace rebate::tsql
