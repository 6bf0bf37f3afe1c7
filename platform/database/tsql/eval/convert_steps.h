#pragma once

#include "platform/database/tsql/eval/convert.h"

// The parts of a conversion, by the type that it leads to. What is Null never comes here, nor a pair of types between
// which there is no conversion.
namespace rebate::tsql {

struct Conversion {
  const DataType& from;
  const DataType& to;
  Purpose purpose;
  TextPool& pool;
  int style;

  Text FromName() const { return Text(MessageName(from.kind)); }
  Text ToName() const { return Text(MessageName(to.kind)); }
};

Value ToInteger(const Value& value, const Conversion& conversion);
Value ToExactNumber(const Value& value, const Conversion& conversion);
Value ToFloat(const Value& value, const Conversion& conversion);
Value ToTextType(const Value& value, const Conversion& conversion);
Value ToDate(const Value& value, const Conversion& conversion);

// The moment that a value of a date type stands for.
Moment MomentOf(const Value& value);
// Days since 1900-01-01 of a value of a date type, exactly, with as many digits as there is room for.
Decimal DaysOf(const Value& value);

[[noreturn]] void Refuse(Text description);
// "Arithmetic overflow error converting numeric to data type int."
[[noreturn]] void RefuseOverflow(const Conversion& conversion);
// "Arithmetic overflow error converting expression to data type int."
[[noreturn]] void RefuseExpression(const Conversion& conversion);
// "Arithmetic overflow error for type int, value = 3000000000.000000.", of a float.
[[noreturn]] void RefuseFloat(const Conversion& conversion, double number);

}  // namespace rebate::tsql
