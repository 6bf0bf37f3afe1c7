#pragma once

#include <optional>
#include <string_view>

#include "platform/database/tsql/ast.h"

// What the types of Transact-SQL are to each other.
namespace rebate::tsql {

bool IsText(TypeKind kind);
bool IsNational(TypeKind kind);     // text that counts its length in UTF-16 units
bool IsInteger(TypeKind kind);      // bit included
bool IsExactNumber(TypeKind kind);  // decimal and money
bool IsFloat(TypeKind kind);
bool IsNumber(TypeKind kind);  // every one of the three above

// The digits behind the point that a number of the type keeps; kAnyScale for a decimal whose scale isn't known before
// it is read, and for floats.
inline constexpr int kAnyScale = -1;
int ScaleOf(const DataType& type);

// The type as a column declares it: "nvarchar(255)", "decimal(28,10)", "int".
Text Declaration(const DataType& type);
// Reads what Declaration wrote; "INTEGER", as a column of row numbers is declared, is an int. Nothing for other texts.
std::optional<DataType> ParseDeclaration(std::string_view text);

// The type's name in the server's messages: "int", "nvarchar", "numeric".
std::string_view MessageName(TypeKind kind);

// The type in which two values meet, in a comparison, a union or the branches of a case.
DataType CommonType(const DataType& left, const DataType& right);

// The type of `left operation right` for the arithmetic operators between numbers.
DataType ArithmeticType(BinaryOperator operation, const DataType& left, const DataType& right);

inline DataType IntType() {
  return {TypeKind::Int, 0, 0, 0};
}
inline DataType FloatType() {
  return {TypeKind::Float, 0, 0, 0};
}
inline DataType DateTimeType() {
  return {TypeKind::DateTime, 0, 0, 0};
}
inline DataType DecimalType(int precision, int scale) {
  return {TypeKind::Decimal, 0, precision, scale};
}
inline DataType TextType(TypeKind kind, int length) {
  return {kind, length, 0, 0};
}

}  // namespace rebate::tsql
