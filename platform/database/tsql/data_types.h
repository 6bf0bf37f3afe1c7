#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/values/calendar.h"
#include "platform/values/types.h"

// The types of Transact-SQL, and what they are to each other.
namespace rebate::tsql {

enum class BinaryOperator;

enum class TypeKind : std::uint8_t {
  Bit,
  TinyInt,
  SmallInt,
  Int,
  BigInt,
  Decimal,
  Money,
  SmallMoney,
  Float,
  Real,
  Char,
  VarChar,
  NChar,
  NVarChar,
  DateTime,
  SmallDateTime,
  Date,
  DateTime2
};

struct DataType {
  TypeKind kind = TypeKind::Int;
  int length = 0;     // of the character types: bytes, or UTF-16 units of the national ones; kMaxLength for (max)
  int precision = 0;  // of Decimal
  int scale = 0;      // of Decimal; of DateTime2 the digits of the fraction

  static constexpr int kMaxLength = -1;
  bool operator==(const DataType&) const = default;
};

bool IsText(TypeKind kind);
bool IsNational(TypeKind kind);     // text that counts its length in UTF-16 units
bool IsFixedText(TypeKind kind);    // char and nchar, padded with blanks
bool IsInteger(TypeKind kind);      // bit included
bool IsMoney(TypeKind kind);        // money and smallmoney
bool IsExactNumber(TypeKind kind);  // decimal, money and smallmoney
bool IsFloat(TypeKind kind);
bool IsNumber(TypeKind kind);  // integers, exact numbers and floats
bool IsDate(TypeKind kind);    // datetime, smalldatetime, date and datetime2

// The calendar's word for a date type.
DateForm FormOf(const DataType& type);

// The type as a column declares it to SQLite: "nvarchar(255)", "decimal text(28,10)", "int", "money text".
Text Declaration(const DataType& type);
// Reads what Declaration wrote; "INTEGER", as a column of row numbers is declared, is an int. Nothing for other texts.
std::optional<DataType> ParseDeclaration(std::string_view text);

// The type's name as programs write it, without its lengths: "int", "decimal"; and back.
std::string_view NameOfType(TypeKind kind);
std::optional<TypeKind> FindTypeKind(std::string_view name);

// The type's name in the server's messages: "int", "nvarchar", "numeric".
std::string_view MessageName(TypeKind kind);

// The type in which two values meet, in a comparison, a union or the branches of a case.
DataType CommonType(const DataType& left, const DataType& right);

// The type of `left operation right` for the arithmetic operators between numbers. An integer literal beside a decimal
// counts as a decimal of its own digits: who calls hands that type in.
DataType ArithmeticType(BinaryOperator operation, const DataType& left, const DataType& right);

// The decimal as which an integer or money takes part in decimal arithmetic: an int is decimal(10,0), money
// decimal(19,4). A decimal is itself.
DataType DecimalTypeOf(const DataType& type);

// The types of the aggregates sum and avg over numbers.
DataType SumType(const DataType& operand);
DataType AvgType(const DataType& operand);

inline DataType TypeOf(TypeKind kind) {
  return {kind, 0, 0, 0};
}
inline DataType IntType() {
  return TypeOf(TypeKind::Int);
}
inline DataType FloatType() {
  return TypeOf(TypeKind::Float);
}
inline DataType DateTimeType() {
  return TypeOf(TypeKind::DateTime);
}
inline DataType DecimalType(int precision, int scale) {
  return {TypeKind::Decimal, 0, precision, scale};
}
inline DataType TextType(TypeKind kind, int length) {
  return {kind, length, 0, 0};
}

}  // namespace rebate::tsql
