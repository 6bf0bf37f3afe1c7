#pragma once

#include <sqlite3.h>

#include <span>

#include "platform/database/row_set.h"
#include "platform/database/tsql/print/command.h"

namespace rebate {

// Reads the rows of a statement, one at a time, as values of their columns' types.
class RowReader {
 public:
  // `names` are those of the columns.
  RowReader(sqlite3_stmt* statement, std::span<const tsql::ResultColumn> columns, Ref<FieldNames> names)
      : statement_(statement), columns_(columns), rows_(New<RowSet>(std::move(names))) {}

  // Adds the row that the statement stands on. Raises where a number doesn't fit its type.
  void AddRow();
  // Puts the rows that were added in the order.
  void Sort(std::span<const tsql::ResultOrder> order);
  const Ref<RowSet>& rows() const { return rows_; }

 private:
  void AddValue(sqlite3_value* value, const tsql::DataType& type);
  Variant DateValue(std::string_view text);

  sqlite3_stmt* statement_;
  std::span<const tsql::ResultColumn> columns_;
  Ref<RowSet> rows_;
  Text last_date_;  // and its value: rows that follow each other often share it
  Variant last_date_value_;
};

}  // namespace rebate
