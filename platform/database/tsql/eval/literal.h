#pragma once

#include <optional>

#include "platform/database/tsql/eval/convert.h"
#include "platform/database/tsql/parse/lexer.h"

namespace rebate::tsql {

// The type that a literal of the kind has by itself; of a decimal and of a text one that holds any of the kind.
DataType LiteralType(LiteralKind kind);
// The type that just this literal has: decimal(3,2) for 1.50, varchar(3) for 'abc', decimal(2,0) for 10.
DataType MeasuredType(const LiteralToken& literal);

// The value of a literal, turned into `to`, with its sign changed where `negated`; with `as_written` a decimal keeps
// the digits of the literal whatever the scale of `to`. A text lies in the literal's bytes or in `pool`. Raises what
// converting raises, and for a number outside of a float's range.
Value LiteralValue(const LiteralToken& literal, bool negated, bool as_written, const DataType& to, Purpose purpose,
                   TextPool& pool);

// The number of an integer literal that goes to an int; nothing for any other literal, or any other type.
std::optional<std::int64_t> LiteralInteger(const LiteralToken& literal, bool negated, const DataType& to);

// The literal's own digits, where they are already what a decimal column of the type keeps of it; nothing for others.
// Amounts mostly are, and needn't be read to be stored.
std::optional<std::string_view> LiteralKey(const LiteralToken& literal, const DataType& type);

}  // namespace rebate::tsql
