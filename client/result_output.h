#pragma once

#include <iosfwd>

namespace rebate {

class Recordset;

// The rows as a table with their count behind it; a Null is shown as NULL. `width` as in Table::Print.
void PrintTable(Recordset& rows, std::ostream& out, std::size_t width);

// One JSON object a row, keys in column order: numbers, decimals with all their digits too, as numbers, datetimes as
// text, a Null as null.
void PrintJsonRows(Recordset& rows, std::ostream& out);

}  // namespace rebate
