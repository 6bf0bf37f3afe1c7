#include "platform/database/tsql/bind/constant.h"

namespace rebate::tsql {

bound::Constant KeptConstant(const Value& value) {
  switch (value.kind) {
    case Value::Kind::Integer:
      return {value.integer};
    case Value::Kind::Real:
      return {value.real};
    case Value::Kind::Decimal:
      return {value.decimal.ToKey()};
    default:
      return {Text(value.text)};
  }
}

Value ConstantValue(const bound::Constant& constant, const DataType& type) {
  if (const auto* integer = std::get_if<std::int64_t>(&constant.value)) return Value::Of(*integer);
  if (const auto* real = std::get_if<double>(&constant.value)) return Value::Of(*real);
  const Text& text = std::get<Text>(constant.value);
  if (IsExactNumber(type.kind)) return Value::Of(Decimal::Parse(text).value());
  return Value::Of(std::string_view(text));
}

bound::ExpressionPtr IntConstant(std::int64_t number) {
  return bound::Make(bound::Constant{number}, IntType(), false);
}

}  // namespace rebate::tsql
