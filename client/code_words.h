#pragma once

#include "calls/json_text.h"

namespace rebate {

class Dictionary;

// A code with the word for it behind, such as `24 suppliers`; the code alone where there is no word.
Text RebateClassText(const Text& code);
Text ItemClassText(const Text& code);

// What the rates of a type, given as its row, are counted in: `%`, `元`, `元 a unit` or `units of goods`; empty where
// the row doesn't tell.
Text RateUnit(const Dictionary& type);

// `title (unit)`, or the title alone without a unit.
Text WithUnit(const Text& title, const Text& unit);

// The value with the ids and codes in it, which rows hold as text or as numbers, as numbers throughout.
Json WithNumericIds(Json value);

}  // namespace rebate
