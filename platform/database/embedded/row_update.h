#pragma once

#include <memory>
#include <vector>

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/embedded/variables.h"
#include "platform/database/tsql/print/command.h"

namespace rebate {

// One row of an update that is worked out outside of SQLite: its number, and its columns as they will be.
class ChangedRow {
 public:
  // The row on which the statement stands: its number, then so many columns as they are stored.
  ChangedRow(sqlite3_stmt* select, std::size_t columns);

  std::int64_t number() const { return number_; }
  void Set(std::size_t column, const tsql::Value& value);
  // The column's default, SQLite's text of which is given; Null where it is empty.
  void SetDefault(std::size_t column, sqlite3* database, const Text& sql, const Text& path);
  // The number and the columns as the parameters of the statement that writes the row.
  void BindTo(sqlite3_stmt* insert) const;

 private:
  struct FreeValue {
    void operator()(sqlite3_value* value) const { sqlite3_value_free(value); }
  };
  // As SQLite had it, or else as it was worked out.
  struct Cell {
    std::unique_ptr<sqlite3_value, FreeValue> kept;
    tsql::Value value;
    Text text;
  };

  std::int64_t number_;
  std::vector<Cell> cells_;
};

// Gives the variable of a value what a row came to.
void AssignVariable(const tsql::RowValue& value, const tsql::Value& result, Variables& variables);

}  // namespace rebate
