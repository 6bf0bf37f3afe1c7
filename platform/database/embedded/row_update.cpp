#include "platform/database/embedded/row_update.h"

namespace rebate {

using tsql::Value;

ChangedRow::ChangedRow(sqlite3_stmt* select, std::size_t columns)
    : number_(sqlite3_column_int64(select, 0)), cells_(columns) {
  for (std::size_t i = 0; i < columns; ++i) {
    cells_[i].kept.reset(sqlite3_value_dup(sqlite3_column_value(select, static_cast<int>(i) + 1)));
    if (!cells_[i].kept) throw std::bad_alloc();
  }
}

void ChangedRow::Set(std::size_t column, const Value& value) {
  Cell& cell = cells_[column];
  cell.kept.reset();
  cell.value = value;
  if (value.kind == Value::Kind::Decimal) cell.text = value.decimal.ToKey();
  if (value.kind == Value::Kind::Text) cell.text = Text(value.text);
}

void ChangedRow::SetDefault(std::size_t column, sqlite3* database, const Text& sql, const Text& path) {
  if (sql.empty()) return Set(column, {});
  const StatementHandle query = Prepare(database, "SELECT " + sql, path);
  if (const int result = sqlite3_step(query.get()); result != SQLITE_ROW) throw SqliteError(database, result, path);
  cells_[column].kept.reset(sqlite3_value_dup(sqlite3_column_value(query.get(), 0)));
  if (!cells_[column].kept) throw std::bad_alloc();
}

void ChangedRow::BindTo(sqlite3_stmt* insert) const {
  Bind(insert, 1, number_);
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    const Cell& cell = cells_[i];
    const int index = static_cast<int>(i) + 2;
    const bool text = cell.value.kind == Value::Kind::Decimal || cell.value.kind == Value::Kind::Text;
    if (cell.kept) {
      NeedDone(sqlite3_bind_value(insert, index, cell.kept.get()));
    } else if (text) {
      Bind(insert, index, std::string_view(cell.text));
    } else {
      Bind(insert, index, cell.value);
    }
  }
}

void AssignVariable(const tsql::RowValue& value, const Value& result, Variables& variables) {
  if (!value.target) return variables.Set(value.variable, result);
  tsql::TextPool pool;
  variables.Set(value.variable, Convert(result, value.type, value.variable_type, tsql::Purpose::Cast, pool));
}

}  // namespace rebate
