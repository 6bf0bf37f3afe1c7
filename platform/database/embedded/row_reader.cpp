#include "platform/database/embedded/row_reader.h"

#include <limits>

#include "platform/automation/error.h"
#include "platform/database/embedded/sqlite_handles.h"
#include "platform/values/calendar.h"

namespace rebate {
namespace {

std::vector<Text> NamesOf(std::span<const tsql::ResultColumn> columns) {
  std::vector<Text> names;
  for (const tsql::ResultColumn& column : columns) names.push_back(column.name);
  return names;
}

Variant IntegerValue(std::int64_t number, const tsql::DataType& type) {
  const bool fits = number >= std::numeric_limits<Long>::min() && number <= std::numeric_limits<Long>::max();
  if (fits) return Variant(static_cast<Long>(number));
  if (type.kind == tsql::TypeKind::BigInt) return Variant::Decimal(std::to_string(number));
  throw Error(database_error::kStatement, "", "Arithmetic overflow error converting expression to data type int.");
}

}  // namespace

RowReader::RowReader(sqlite3_stmt* statement, std::span<const tsql::ResultColumn> columns)
    : statement_(statement), columns_(columns), rows_(New<RowSet>(NamesOf(columns))) {}

void RowReader::AddRow() {
  const int count = static_cast<int>(columns_.size());
  for (int column = 0; column < count; ++column) AddValue(column);
}

void RowReader::AddValue(int column) {
  if (sqlite3_column_type(statement_, column) == SQLITE_NULL) return rows_->Add(Variant::Null());
  const tsql::DataType& type = columns_[static_cast<std::size_t>(column)].type;
  switch (type.kind) {
    case tsql::TypeKind::Bit:
      return rows_->Add(Variant(sqlite3_column_int64(statement_, column) != 0));
    case tsql::TypeKind::TinyInt:
    case tsql::TypeKind::SmallInt:
      return rows_->Add(Variant(static_cast<std::int16_t>(sqlite3_column_int64(statement_, column))));
    case tsql::TypeKind::Int:
    case tsql::TypeKind::BigInt:
      return rows_->Add(IntegerValue(sqlite3_column_int64(statement_, column), type));
    case tsql::TypeKind::Decimal:
    case tsql::TypeKind::Money:
    case tsql::TypeKind::SmallMoney:
      // A key has the digits that count and no others.
      return rows_->Add(Variant::Decimal(ColumnText(statement_, column)));
    case tsql::TypeKind::Float:
      return rows_->Add(Variant(sqlite3_column_double(statement_, column)));
    case tsql::TypeKind::Real:
      return rows_->Add(Variant(static_cast<float>(sqlite3_column_double(statement_, column))));
    case tsql::TypeKind::DateTime:
    case tsql::TypeKind::SmallDateTime:
    case tsql::TypeKind::Date:
    case tsql::TypeKind::DateTime2:
      return rows_->Add(DateValue(column));
    default:
      return rows_->AddText(ColumnText(statement_, column));
  }
}

Variant RowReader::DateValue(int column) {
  const std::string_view text = ColumnText(statement_, column);
  if (text != last_date_ || last_date_.empty()) {
    const auto moment = ReadStored(text);
    if (!moment) {
      throw Error(database_error::kStatement, "",
                  "Conversion failed when converting date and/or time from character string.");
    }
    last_date_ = text;
    last_date_value_ = Variant::Date(ToAutomationDate(*moment));
  }
  return last_date_value_;
}

}  // namespace rebate
