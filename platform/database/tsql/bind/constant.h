#pragma once

#include "platform/database/tsql/bind/bound_tree.h"

namespace rebate::tsql {

// The constant for a value that isn't Null.
bound::Constant KeptConstant(const Value& value);
// The value that a constant of the type holds; a text in it lies in the constant.
Value ConstantValue(const bound::Constant& constant, const DataType& type);
// A whole number as an int.
bound::ExpressionPtr IntConstant(std::int64_t number);

}  // namespace rebate::tsql
