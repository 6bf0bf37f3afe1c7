#include <limits>

#include "platform/database/tsql/eval/function.h"
#include "platform/database/tsql/eval/number_result.h"

namespace rebate::tsql {
namespace {

int ScaleOfResult(const Invocation& call) {
  return call.result.kind == TypeKind::Decimal ? call.result.scale : 4;
}

// An operation in the family of numbers that the result belongs to.
template <Value (*OfIntegers)(const Invocation&), std::optional<Decimal> (*OfDecimals)(const Invocation&),
          double (*OfReals)(double, double)>
Value Operation(const Invocation& call) {
  if (IsInteger(call.result.kind)) return OfIntegers(call);
  if (IsFloat(call.result.kind)) return RealResult(OfReals(call.Real(0), call.Real(1)), call.result);
  return DecimalResult(OfDecimals(call), call.result);
}

// ---- integers ----

using WholeOperation = bool (*)(std::int64_t, std::int64_t, std::int64_t*);  // true where 64 bits don't hold the result

template <WholeOperation Operate>
Value Checked(const Invocation& call) {
  std::int64_t number = 0;
  if (Operate(call.Integer(0), call.Integer(1), &number)) RefuseOverflow(call.result);
  return IntegerResult(number, call.result);
}

bool AddWhole(std::int64_t left, std::int64_t right, std::int64_t* result) {
  return __builtin_add_overflow(left, right, result);
}
bool SubtractWhole(std::int64_t left, std::int64_t right, std::int64_t* result) {
  return __builtin_sub_overflow(left, right, result);
}
bool MultiplyWhole(std::int64_t left, std::int64_t right, std::int64_t* result) {
  return __builtin_mul_overflow(left, right, result);
}
bool DivideWhole(std::int64_t left, std::int64_t right, std::int64_t* result) {
  if (right == 0) RefuseDivisionByZero();
  if (right == -1) return SubtractWhole(0, left, result);
  *result = left / right;
  return false;
}
bool ModuloWhole(std::int64_t left, std::int64_t right, std::int64_t* result) {
  if (right == 0) RefuseDivisionByZero();
  *result = right == -1 ? 0 : left % right;
  return false;
}

// ---- decimals and money ----

std::optional<Decimal> AddDecimals(const Invocation& call) {
  return Decimal::Add(call.Number(0), call.Number(1), ScaleOfResult(call));
}
std::optional<Decimal> SubtractDecimals(const Invocation& call) {
  return Decimal::Add(call.Number(0), call.Number(1).Negated(), ScaleOfResult(call));
}
std::optional<Decimal> MultiplyDecimals(const Invocation& call) {
  return Decimal::Multiply(call.Number(0), call.Number(1), ScaleOfResult(call));
}
std::optional<Decimal> DivideDecimals(const Invocation& call) {
  if (call.Number(1).IsZero()) RefuseDivisionByZero();
  return Decimal::Divide(call.Number(0), call.Number(1), ScaleOfResult(call), Decimal::Digits::Cut);
}
std::optional<Decimal> ModuloDecimals(const Invocation& call) {
  if (call.Number(1).IsZero()) RefuseDivisionByZero();
  return Decimal::Remainder(call.Number(0), call.Number(1), ScaleOfResult(call));
}

// ---- floats ----

double AddReals(double left, double right) {
  return left + right;
}
double SubtractReals(double left, double right) {
  return left - right;
}
double MultiplyReals(double left, double right) {
  return left * right;
}
double DivideReals(double left, double right) {
  if (right == 0) RefuseDivisionByZero();
  return left / right;
}

// Floats have no remainder: whoever wrote the statement has been told so.
Value Modulo(const Invocation& call) {
  if (IsInteger(call.result.kind)) return Checked<ModuloWhole>(call);
  return DecimalResult(ModuloDecimals(call), call.result);
}

Value Negate(const Invocation& call) {
  if (IsFloat(call.result.kind)) return Value::Of(-call.Real(0));
  if (!IsInteger(call.result.kind)) return DecimalResult(call.Number(0).Negated(), call.result);
  std::int64_t number = 0;
  if (SubtractWhole(0, call.Integer(0), &number)) RefuseOverflow(call.result);
  return IntegerResult(number, call.result);
}

// ---- bits ----

Value BitAnd(const Invocation& call) {
  return Value::Of(call.Integer(0) & call.Integer(1));
}
Value BitOr(const Invocation& call) {
  return Value::Of(call.Integer(0) | call.Integer(1));
}
Value BitXor(const Invocation& call) {
  return Value::Of(call.Integer(0) ^ call.Integer(1));
}
Value BitNot(const Invocation& call) {
  const std::int64_t number = call.Integer(0);
  if (call.types[0].kind == TypeKind::Bit) return Value::Of(1 - number);
  if (call.types[0].kind == TypeKind::TinyInt) return Value::Of(std::numeric_limits<std::uint8_t>::max() - number);
  return Value::Of(~number);
}

constexpr Function kFunctions[] = {
    {"add", Operation<Checked<AddWhole>, AddDecimals, AddReals>},
    {"subtract", Operation<Checked<SubtractWhole>, SubtractDecimals, SubtractReals>},
    {"multiply", Operation<Checked<MultiplyWhole>, MultiplyDecimals, MultiplyReals>},
    {"divide", Operation<Checked<DivideWhole>, DivideDecimals, DivideReals>},
    {"modulo", Modulo},
    {"negate", Negate},
    {"bit_and", BitAnd},
    {"bit_or", BitOr},
    {"bit_xor", BitXor},
    {"bit_not", BitNot},
};

}  // namespace

std::span<const Function> ArithmeticFunctions() {
  return kFunctions;
}

}  // namespace rebate::tsql
