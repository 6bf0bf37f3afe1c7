#include "platform/database/tsql/eval/number_result.h"

#include <cmath>
#include <limits>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

template <typename Integer>
bool Holds(std::int64_t number) {
  return number >= std::numeric_limits<Integer>::min() && number <= std::numeric_limits<Integer>::max();
}

bool Fits(std::int64_t number, TypeKind kind) {
  switch (kind) {
    case TypeKind::Bit:
      return number == 0 || number == 1;
    case TypeKind::TinyInt:
      return Holds<std::uint8_t>(number);
    case TypeKind::SmallInt:
      return Holds<std::int16_t>(number);
    case TypeKind::Int:
      return Holds<std::int32_t>(number);
    default:
      return true;
  }
}

// An amount of money is a whole number of ten-thousandths, in 64 bits or in 32.
bool FitsMoney(const Decimal& amount, TypeKind kind) {
  const std::uint64_t limit = kind == TypeKind::SmallMoney ? std::uint64_t{1} << 31 : std::uint64_t{1} << 63;
  return amount.negative() ? amount.units() <= limit : amount.units() < limit;
}

}  // namespace

void RefuseDivisionByZero() {
  Refuse("Divide by zero error encountered.");
}

void RefuseFloatOperation() {
  Refuse("An invalid floating point operation occurred.");
}

void RefuseOverflow(const DataType& type) {
  Refuse("Arithmetic overflow error converting expression to data type " + Text(MessageName(type.kind)) + ".");
}

Value IntegerResult(std::int64_t number, const DataType& type) {
  if (!Fits(number, type.kind)) RefuseOverflow(type);
  return Value::Of(number);
}

Value DecimalResult(const std::optional<Decimal>& number, const DataType& type) {
  const bool money = type.kind != TypeKind::Decimal;
  const auto rounded = number ? number->WithScale(money ? 4 : type.scale) : std::nullopt;
  if (!rounded) RefuseOverflow(type);
  const bool fits = money ? FitsMoney(*rounded, type.kind) : rounded->IntegerDigits() <= type.precision - type.scale;
  if (!fits) RefuseOverflow(type);
  return Value::Of(*rounded);
}

Value RealResult(double number, const DataType& type) {
  if (std::isnan(number)) RefuseFloatOperation();
  if (type.kind == TypeKind::Real) number = static_cast<double>(static_cast<float>(number));
  if (std::isinf(number)) RefuseOverflow(type);
  return Value::Of(number);
}

}  // namespace rebate::tsql
