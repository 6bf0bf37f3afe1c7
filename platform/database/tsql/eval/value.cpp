#include "platform/database/tsql/eval/value.h"

#include <utility>

namespace rebate::tsql {

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

Value Value::Of(const rebate::Decimal& decimal) {
  Value value;
  value.kind = Kind::Decimal;
  value.decimal = decimal;
  return value;
}

Value Value::Of(std::string_view text) {
  Value value;
  value.kind = Kind::Text;
  value.text = text;
  return value;
}

std::string_view TextPool::Keep(Text text) {
  return *texts_.emplace_back(std::make_unique<Text>(std::move(text)));
}

void TextPool::Clear() {
  texts_.clear();
}

}  // namespace rebate::tsql
