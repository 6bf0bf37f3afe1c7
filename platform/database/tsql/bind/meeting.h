#pragma once

#include "platform/database/tsql/bind/bind_context.h"

// How values of several types come together.
namespace rebate::tsql {

// Types of one family compare with each other as they are kept.
enum class TypeFamily { Integer, Decimal, Float, Text, DateTime, Date, DateTime2 };
TypeFamily FamilyOf(TypeKind kind);

// `expression` as a `type`, for `purpose`. A literal is bound as one from the start, a constant is converted here and
// now; Null takes the type.
bound::ExpressionPtr ConvertTo(BindContext& context, bound::ExpressionPtr expression, const DataType& type,
                               Purpose purpose, bound::ExpressionPtr style = nullptr);

// The type that the expression has by itself. For a literal whose digits decide about it, what comes of the statement
// is then good for these digits alone. In decimal arithmetic an integer literal is a decimal with its own digits.
DataType OwnType(BindContext& context, bound::Expression& expression, bool in_decimal_arithmetic = false);

// `expression` as a variable of the type takes it: a text that is too long is cut. Raises where only a cast converts.
bound::ExpressionPtr ConvertForVariable(BindContext& context, bound::ExpressionPtr expression, const DataType& type);

bool IsNullLiteral(const bound::Expression& expression);

// Brings the two to types of one family, for a comparison. Raises for types that don't go together.
void Meet(BindContext& context, bound::ExpressionPtr& left, bound::ExpressionPtr& right);
// `expression` as a value of `common`'s family.
bound::ExpressionPtr BringTo(BindContext& context, bound::ExpressionPtr expression, const DataType& common,
                             Purpose purpose);

// The type in which all expressions meet as the results of a case, a coalesce or a union; nothing where all are Null.
std::optional<DataType> CommonTypeOf(BindContext& context, const std::vector<bound::Expression*>& expressions);

// Raises where a value of the one type can't become one of the other, whatever its value.
void CheckConvertible(const DataType& from, const DataType& to, bool is_explicit);

}  // namespace rebate::tsql
