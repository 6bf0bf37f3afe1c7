#include "client/row_tables.h"

#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

Table EmptyTable(const std::vector<RowColumn>& columns) {
  std::vector<Table::Column> titles;
  for (const RowColumn& column : columns) titles.push_back({Text(column.title), column.right, column.spare});
  return Table(std::move(titles));
}

Text Worded(const RowColumn& column, Text value) {
  return column.words == nullptr ? value : column.words(value);
}

}  // namespace

Text CellText(const Variant& value) {
  if (value.IsNull() || value.IsObject()) return {};
  return ToText(value);
}

Text CellText(const Dictionary& row, std::string_view key) {
  return CellText(row.GetValue(key, Variant::Null()));
}

Table RowTable(const std::vector<RowColumn>& columns, const Vector& rows) {
  Table table = EmptyTable(columns);
  for (Long i = 1; i <= rows.Size(); ++i) {
    const auto row = ObjectAs<Dictionary>(rows.Item(i));
    std::vector<Text> cells;
    for (const RowColumn& column : columns) cells.push_back(Worded(column, CellText(*row, column.key)));
    table.Add(std::move(cells));
  }
  return table;
}

Table RowTable(const std::vector<RowColumn>& columns, Recordset& rows) {
  Table table = EmptyTable(columns);
  for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
    std::vector<Text> cells;
    for (const RowColumn& column : columns) cells.push_back(Worded(column, CellText(rows.FieldValue(column.key))));
    table.Add(std::move(cells));
  }
  return table;
}

}  // namespace rebate
