#pragma once

#include <optional>
#include <string_view>

#include "platform/automation/variant.h"
#include "platform/values/ascii.h"
#include "platform/values/calendar.h"
#include "platform/values/number_text.h"

namespace rebate {

// The automation world's own conversions. All raise 13 (type mismatch) for what doesn't convert, 94 for Null and 6 for
// a number outside the target type; Empty counts as 0, False and the empty text.

// The default text of a value: integers in decimal, floats with up to 15 significant digits and no trailing zeros,
// Booleans as True and False, dates as `yyyy-mm-dd hh:mm:ss` without the time at midnight.
Text ToText(const Variant& value);

// A 32-bit integer; fractions round to the nearest, halves to the even neighbour. True is -1.
Long ToLong(const Variant& value);

double ToDouble(const Variant& value);

// Every number but 0 is True; of texts, also "True" and "False" without regard to case.
bool ToBoolean(const Variant& value);

// Whether `value` compares equal to the number, its text read as one; Null equals nothing.
bool EqualsNumber(const Variant& value, double number);

// The same where a value that is no number equals none. Never raises.
bool IsTheNumber(const Variant& value, double number);

// The number that a text is, where it is one: blanks around it, a sign before or behind, a fraction, an exponent,
// thousands separators between the integer digits, &H and &O numbers.
std::optional<double> ParseNumber(std::string_view text);

// The leading-number rule: the longest number that the text starts with, behind blanks; 0 where there is none, the
// largest float for a number beyond it. Never raises.
double LeadingNumber(std::string_view text);

// The general numeric test: whether the value converts to a number.
bool IsNumeric(const Variant& value);

}  // namespace rebate
