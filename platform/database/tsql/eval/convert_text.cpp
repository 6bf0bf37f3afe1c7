#include <algorithm>

#include "platform/database/tsql/eval/convert_steps.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"
#include "platform/values/text.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void RefuseStyle(const Conversion& conversion) {
  Refuse(std::to_string(conversion.style) + " is not a valid style number when converting from " +
         conversion.FromName() + " to a character string.");
}

// A comma between each three digits in front of the point.
Text WithCommas(Text amount) {
  const std::size_t first = amount.starts_with('-') ? 1 : 0;
  for (std::size_t at = std::min(amount.find('.'), amount.size()); at > first + 3; at -= 3)
    amount.insert(at - 3, 1, ',');
  return amount;
}

// A column keeps a number without the zeros that its type shows.
Text DecimalText(const Decimal& number, const DataType& type) {
  return number.WithScale(type.scale).value_or(number).ToText();
}

Text MoneyText(const Decimal& amount, const Conversion& conversion) {
  switch (conversion.style) {
    case 0:
      return amount.WithScale(2)->ToText();
    case 1:
      return WithCommas(amount.WithScale(2)->ToText());
    case 2:
    case 126:
      return amount.WithScale(4)->ToText();
    default:
      RefuseStyle(conversion);
  }
}

Text FloatText(double number, const Conversion& conversion) {
  switch (conversion.style) {
    case 0:
      return ServerFloatText(number, 6);
    case 1:
      return ScientificText(number, 8);
    case 2:
      return ScientificText(number, 16);
    case 3:
    case 126:
      return ScientificText(number, 17);
    default:
      RefuseStyle(conversion);
  }
}

Text DateAsText(const Value& value, const Conversion& conversion) {
  std::optional<Text> text = FormatMoment(MomentOf(value), FormOf(conversion.from), conversion.style);
  if (!text) RefuseStyle(conversion);
  return std::move(*text);
}

Text TextOf(const Value& value, const Conversion& conversion) {
  if (IsDate(conversion.from.kind)) return DateAsText(value, conversion);
  switch (value.kind) {
    case Value::Kind::Integer:
      return std::to_string(value.integer);
    case Value::Kind::Real:
      return FloatText(value.real, conversion);
    default:
      return IsMoney(conversion.from.kind) ? MoneyText(value.decimal, conversion)
                                           : DecimalText(value.decimal, conversion.from);
  }
}

// A number's digits are never cut.
Value RefuseShort(const Value& value, const Conversion& conversion) {
  const TypeKind from = conversion.from.kind;
  if (IsMoney(from)) {
    Refuse("There is insufficient result space to convert a " + conversion.FromName() + " value to " +
           conversion.ToName() + ".");
  }
  if (IsFloat(from)) RefuseFloat(conversion, value.real);
  if (from == TypeKind::Decimal) RefuseOverflow(conversion);
  const bool starred = from != TypeKind::BigInt && !IsNational(conversion.to.kind);
  if (starred && conversion.purpose != Purpose::Assign) return Value::Of(std::string_view("*"));
  RefuseExpression(conversion);
}

std::string_view Padded(std::string_view text, std::size_t blanks, TextPool& pool) {
  return blanks == 0 ? text : pool.Keep(Text(text).append(blanks, ' '));
}

// `text`, which lies in the pool or in the value, as one of the type's length.
Value FitText(std::string_view text, const Value& value, const Conversion& conversion) {
  const DataType& to = conversion.to;
  if (to.length == DataType::kMaxLength) return Value::Of(text);
  const auto limit = static_cast<std::size_t>(to.length);
  const bool fixed = IsFixedText(to.kind);
  // No character counts more units than it has bytes.
  if (text.size() <= limit && !fixed) return Value::Of(text);
  const std::size_t units = CountUnits(text, IsNational(to.kind));
  if (units <= limit) return Value::Of(fixed ? Padded(text, limit - units, conversion.pool) : text);
  if (IsNumber(conversion.from.kind)) {
    const Value star = RefuseShort(value, conversion);
    return fixed ? Value::Of(Padded(star.text, limit - 1, conversion.pool)) : star;
  }
  const std::string_view first = FirstUnits(text, limit, IsNational(to.kind));
  if (conversion.purpose == Purpose::Assign && !WithoutTrailingBlanks(text.substr(first.size())).empty()) {
    Refuse("String or binary data would be truncated.");
  }
  return Value::Of(fixed ? Padded(first, limit - CountUnits(first, IsNational(to.kind)), conversion.pool) : first);
}

}  // namespace

Value ToTextType(const Value& value, const Conversion& conversion) {
  if (IsText(conversion.from.kind)) return FitText(value.text, value, conversion);
  return FitText(conversion.pool.Keep(TextOf(value, conversion)), value, conversion);
}

}  // namespace rebate::tsql
