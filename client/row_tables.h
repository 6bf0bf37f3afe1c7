#pragma once

#include <vector>

#include "client/table.h"
#include "platform/automation/variant.h"

namespace rebate {

class Dictionary;
class Recordset;
class Vector;

// A column of a table and the key under which the rows hold its value.
struct RowColumn {
  std::string_view title;
  std::string_view key;
  bool right = false;
  int spare = 0;                         // as Table::Column has it
  Text (*words)(const Text&) = nullptr;  // what a cell says of its value, where that isn't the value itself
};

// A value as a table's cell: its text; nothing for Null, Empty and objects.
Text CellText(const Variant& value);
// The same for a row's value; nothing where the row has no such key.
Text CellText(const Dictionary& row, std::string_view key);

// The rows, Dictionaries, as a table.
Table RowTable(const std::vector<RowColumn>& columns, const Vector& rows);
// All rows of the recordset as a table; its cursor is moved.
Table RowTable(const std::vector<RowColumn>& columns, Recordset& rows);

}  // namespace rebate
