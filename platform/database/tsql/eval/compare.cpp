#include "platform/database/tsql/eval/compare.h"

#include "platform/values/folding.h"
#include "platform/values/text_order.h"

namespace rebate::tsql {
namespace {

template <typename Number>
int Order(const Number& left, const Number& right) {
  return left < right ? -1 : right < left ? 1 : 0;
}

}  // namespace

bool EqualValues(const Value& left, const Value& right) {
  switch (left.kind) {
    case Value::Kind::Integer:
      return left.integer == right.integer;
    case Value::Kind::Real:
      return left.real == right.real;
    case Value::Kind::Decimal:
      return left.decimal == right.decimal;
    default:
      return CompareText(left.text, right.text) == 0;
  }
}

int CompareValues(const Value& left, const Value& right, bool dates) {
  switch (left.kind) {
    case Value::Kind::Integer:
      return Order(left.integer, right.integer);
    case Value::Kind::Real:
      return Order(left.real, right.real);
    case Value::Kind::Decimal:
      return Order(left.decimal, right.decimal);
    default:
      return dates ? left.text.compare(right.text) : CompareInOrder(left.text, right.text);
  }
}

std::optional<bool> And(std::optional<bool> left, std::optional<bool> right) {
  if (left == false || right == false) return false;
  if (!left || !right) return std::nullopt;
  return true;
}

std::optional<bool> Or(std::optional<bool> left, std::optional<bool> right) {
  if (left == true || right == true) return true;
  if (!left || !right) return std::nullopt;
  return false;
}

}  // namespace rebate::tsql
