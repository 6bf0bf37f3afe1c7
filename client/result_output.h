#pragma once

#include <iosfwd>

namespace rebate {

class Recordset;

// How rows are printed. Only a table has their count behind it.
enum class RowForm {
  Table,  // a table; a Null is shown as NULL
  Line,   // each row down the page, a line a column; likewise
  Csv,    // a line of titles and one a row, texts in quotation marks where they need them; a Null is nothing
  Json,   // one JSON object a row, keys in column order: numbers, decimals with all their digits too, as numbers,
          // datetimes as text, a Null as null
};

// Prints all rows; the cursor is moved. `width` as in Table::Print.
void PrintRows(Recordset& rows, RowForm form, std::ostream& out, std::size_t width);

}  // namespace rebate
