#include "client/result_output.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "calls/json_text.h"
#include "client/table.h"
#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

bool IsNumber(VariantType type) {
  switch (type) {
    case VariantType::Short:
    case VariantType::Long:
    case VariantType::Single:
    case VariantType::Double:
    case VariantType::Currency:
    case VariantType::Decimal:
      return true;
    default:
      return false;
  }
}

// A column stands at the right where its first value is a number.
std::vector<Table::Column> ColumnsOf(Recordset& rows) {
  std::vector<Table::Column> columns;
  for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
    columns.push_back({rows.FieldName(i), !rows.Eof() && IsNumber(rows.FieldValue(i).type())});
  }
  return columns;
}

// A decimal's digits are a JSON number as they stand; a float could not hold them all.
Text JsonOf(const Variant& value) {
  switch (value.type()) {
    case VariantType::Null:
    case VariantType::Empty:
      return "null";
    case VariantType::Boolean:
      return value.integer() != 0 ? "true" : "false";
    case VariantType::Short:
    case VariantType::Long:
    case VariantType::Currency:
    case VariantType::Decimal:
      return ToText(value);
    case VariantType::Single:
      return ShortestText(static_cast<float>(value.real()));
    case VariantType::Double:
      return JsonLine(value.real());
    default:
      return JsonLine(ToText(value));
  }
}

Table TableOf(Recordset& rows) {
  rows.MoveFirst();
  Table table(ColumnsOf(rows));
  for (; !rows.Eof(); rows.MoveNext()) {
    std::vector<Text> cells;
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
      const Variant value = rows.FieldValue(i);
      cells.push_back(value.IsNull() ? "NULL" : ToText(value));
    }
    table.Add(std::move(cells));
  }
  return table;
}

Text CsvOf(const Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return {};
  const Text text = ToText(value);
  if (text.find_first_of(",\"\r\n") == Text::npos && !text.empty()) return text;
  return '"' + Replace(text, "\"", "\"\"") + '"';
}

void PrintCsv(Recordset& rows, std::ostream& out) {
  for (std::size_t i = 0; i < rows.FieldCount(); ++i) out << (i == 0 ? "" : ",") << CsvOf(rows.FieldName(i));
  out << '\n';
  for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) out << (i == 0 ? "" : ",") << CsvOf(rows.FieldValue(i));
    out << '\n';
  }
}

void PrintJsonRows(Recordset& rows, std::ostream& out) {
  std::vector<Text> keys;
  for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
    keys.push_back((i == 0 ? "{" : ",") + JsonLine(rows.FieldName(i)) + ":");
  }
  for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
    for (std::size_t i = 0; i < keys.size(); ++i) out << keys[i] << JsonOf(rows.FieldValue(i));
    out << "}\n";
  }
}

}  // namespace

void PrintRows(Recordset& rows, RowForm form, std::ostream& out, std::size_t width) {
  switch (form) {
    case RowForm::Json:
      return PrintJsonRows(rows, out);
    case RowForm::Csv:
      return PrintCsv(rows, out);
    case RowForm::Line:
      return TableOf(rows).PrintTurned(out);
    case RowForm::Table:
      break;
  }
  const Table table = TableOf(rows);
  table.Print(out, width);
  out << '(' << table.row_count() << (table.row_count() == 1 ? " row)\n" : " rows)\n");
}

}  // namespace rebate
