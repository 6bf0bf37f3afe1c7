#pragma once

#include <iosfwd>

namespace rebate {

class Dictionary;

// Prints a loaded scheme in readable sections: head, amount ranges, organisations, goods, rates by grid row and range,
// check items; the last three only where there are any. `width` as in Table::Print.
void PrintScheme(const Dictionary& scheme, std::ostream& out, std::size_t width);

}  // namespace rebate
