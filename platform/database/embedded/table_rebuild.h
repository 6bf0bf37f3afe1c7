#pragma once

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/catalog.h"

namespace rebate {

// The name of the old table while the new one takes its rows in.
inline constexpr std::string_view kOldRows = "account old rows";

// What a column of a table that is made anew is filled with: SQLite's text over the old table's columns. Columns that
// aren't named get their defaults.
struct ColumnCopy {
  Text column;
  Text expression;
};

// Makes a table anew, with its rows in their order. `statements` make it and what belongs to it but its indexes, the
// first one being the `create table`. Its row numbers go on where they were; the old indexes are gone, and `indexes`
// are made. Stands in the caller's transaction. Gives SQLITE_OK, or the code of the constraint that the rows don't
// meet, whose text the database then tells; `indexes_done` tells how many statements of `indexes` were carried out.
// Raises all other errors.
struct Rebuild {
  int result = SQLITE_OK;
  std::size_t indexes_done = 0;
};
Rebuild RebuildTable(sqlite3* database, const Text& path, const tsql::TableInfo& table,
                     const std::vector<Text>& statements, const std::vector<ColumnCopy>& copies,
                     const std::vector<Text>& indexes);

// The statements that made the table's indexes, with the schema that they stand in.
std::vector<Text> IndexStatements(sqlite3* database, const Text& path, const tsql::TableInfo& table);

// Runs a statement that may break a constraint: gives SQLITE_OK or the constraint's code, raises all other errors.
int RunConstrained(sqlite3* database, const Text& sql, const Text& path);

}  // namespace rebate
