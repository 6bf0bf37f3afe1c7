#pragma once

#include "calls/json_text.h"

namespace rebate {

// Ids, codes and amounts go into the operations' statements as they come. Refuses arguments that would make them say
// something else: a text under a name that stands for such a value must be a number, or a list of numbers with commas
// between them, and a key, which may become a column's name, must be a word. Raises 5, naming the place.
void CheckIds(const Json& args);

}  // namespace rebate
