#pragma once

#include "platform/database/tsql/eval/value.h"

namespace rebate::tsql {

enum class Purpose : std::uint8_t {
  Assign,    // into a column: a text too long is refused
  Cast,      // by the program's wish, or into a variable: a text too long is cut
  Match,     // for a comparison: a text that is no number becomes Null, which equals nothing
  Tolerant,  // try_cast and try_convert: Null for what doesn't convert
};

// `value` of type `from` as a `to`; Null stays Null. Raises the server's errors for what doesn't convert or doesn't fit
// (tolerantly: gives Null). `style` is that of the convert function, for dates, money and floats. A text in the result
// lies in `value`'s bytes or in `pool`.
Value Convert(const Value& value, const DataType& from, const DataType& to, Purpose purpose, TextPool& pool,
              int style = 0);

// Whether a text reads as a number for isnumeric.
bool IsNumberText(std::string_view text);

}  // namespace rebate::tsql
