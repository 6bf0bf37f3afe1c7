#pragma once

#include <cstdint>
#include <string_view>

#include "platform/database/tsql/data_types.h"
#include "platform/database/tsql/lexer.h"

// Values as an account keeps them, and their way from type to type. Integers, bits and whole decimals are Integer;
// other numbers are Real; text and datetimes (in their sortable form) are Text.
namespace rebate::tsql {

struct Value {
  enum class Kind : std::uint8_t { Null, Integer, Real, Text };
  Kind kind = Kind::Null;
  union {
    std::int64_t integer = 0;
    double real;
  };
  std::string_view text;  // the owner of the bytes is told by who made the value

  static Value Of(std::int64_t integer);
  static Value Of(double real);
  static Value Of(std::string_view text);
  bool IsNull() const { return kind == Kind::Null; }
  double AsDouble() const { return kind == Kind::Integer ? static_cast<double>(integer) : real; }
};

enum class Purpose {
  Assign,  // into a column or a variable: a text too long is refused
  Cast,    // by the program's wish: a text too long is cut
  Match    // for a comparison: a text that is no number becomes Null, which equals nothing
};

// `value` of type `from` as a `to`; Null stays Null. Text in the result lies in `value`'s bytes or in `scratch`. Raises
// the server's errors for what doesn't convert or doesn't fit. `style` is that of the convert function, for dates.
Value Convert(const Value& value, const DataType& from, const DataType& to, Purpose purpose, Text& scratch,
              int style = 0);

// The value of a literal, turned into `to`, with its sign changed where `negated`. Text lies in the literal's bytes or
// in `scratch`.
Value LiteralValue(const LiteralToken& literal, bool negated, const DataType& to, Purpose purpose, Text& scratch);
// The type that a literal has by itself: int, numeric of any scale, float, varchar or nvarchar.
DataType LiteralType(LiteralKind kind);

// A number with the digits of its type and at most 15 that count: "1.50" for 1.5 of a decimal(10,2). `trimmed` leaves
// the trailing zeros of the fraction out.
Text DecimalText(const Value& value, int scale, bool trimmed = false);

// `number` rounded to `scale` digits behind the point, halves away from zero.
double RoundHalfAway(double number, int scale);

// Whether a text reads as a number for isnumeric.
bool IsNumberText(std::string_view text);

// The value as a constant of the statement text of SQLite.
Text SqlConstant(const Value& value);
// `text` as a string of the statement text of SQLite.
Text SqlString(std::string_view text);

// A type in one integer, by which it travels through a statement to the conversion functions, and back.
std::int64_t PackType(const DataType& type);
DataType UnpackType(std::int64_t packed);

}  // namespace rebate::tsql
