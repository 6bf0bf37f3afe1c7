#pragma once

#include "platform/database/tsql/print/command.h"
#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {

SqlText PrintInsert(const bound::Insert& insert);
SqlText PrintUpdate(const bound::Change& change);
SqlText PrintDelete(const bound::Change& change);
// The rows that the statement changes: for each its number, then the columns.
SqlText PrintChangedRows(const bound::Change& change, const std::vector<const bound::Expression*>& columns);

// ---- print_rows.cpp: what is worked out row by row, outside of SQLite ----

// The update of a row at a time. Its order is that of the rows as they are found.
RowUpdate PrintRowUpdate(const bound::Change& change);
// The query of an assigning select: its columns are what the values are made of.
void PrintAssigning(const bound::Query& query, Command& command);
// The value as one for a variable, where no row is needed to tell it; nothing where the expression needs SQLite.
std::optional<RowValue> ValueWithoutRow(const bound::Expression& expression, const Text& variable);

}  // namespace rebate::tsql
