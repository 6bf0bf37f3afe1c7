#pragma once

#include <optional>

#include "platform/database/tsql/eval/value.h"

// What a calculation came to, as a value of the type that it was promised to have; or the server's refusal.
namespace rebate::tsql {

[[noreturn]] void RefuseDivisionByZero();
[[noreturn]] void RefuseFloatOperation();
// The result has no place in the type.
[[noreturn]] void RefuseOverflow(const DataType& type);

// `number`, where the integer type `type` holds it.
Value IntegerResult(std::int64_t number, const DataType& type);
// `number` (nothing where it had too many digits), rounded to the decimal or money type `type`.
Value DecimalResult(const std::optional<Decimal>& number, const DataType& type);
// `number`, rounded to single precision for a real. An infinity is an overflow, no number an invalid operation.
Value RealResult(double number, const DataType& type);

}  // namespace rebate::tsql
