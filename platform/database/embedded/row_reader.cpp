#include "platform/database/embedded/row_reader.h"

#include <limits>

#include "platform/automation/error.h"
#include "platform/database/embedded/sqlite_handles.h"
#include "platform/values/calendar.h"

namespace rebate {
namespace {

Variant IntegerValue(std::int64_t number, const tsql::DataType& type) {
  const bool fits = number >= std::numeric_limits<Long>::min() && number <= std::numeric_limits<Long>::max();
  if (fits) return Variant(static_cast<Long>(number));
  if (type.kind == tsql::TypeKind::BigInt) return Variant::Decimal(std::to_string(number));
  throw Error(database_error::kStatement, "", "Arithmetic overflow error converting expression to data type int.");
}

}  // namespace

void RowReader::AddRow() {
  const int count = static_cast<int>(columns_.size());
  for (int column = 0; column < count; ++column) {
    AddValue(sqlite3_column_value(statement_, column), columns_[static_cast<std::size_t>(column)].type);
  }
}

void RowReader::Sort(std::span<const tsql::ResultOrder> order) {
  std::vector<RowOrder> keys;
  for (const tsql::ResultOrder& key : order) keys.push_back({key.column, key.descending});
  rows_->Sort(keys);
}

void RowReader::AddValue(sqlite3_value* value, const tsql::DataType& type) {
  if (sqlite3_value_type(value) == SQLITE_NULL) return rows_->Add(Variant::Null());
  switch (type.kind) {
    case tsql::TypeKind::Bit:
      return rows_->Add(Variant(sqlite3_value_int64(value) != 0));
    case tsql::TypeKind::TinyInt:
    case tsql::TypeKind::SmallInt:
      return rows_->Add(Variant(static_cast<std::int16_t>(sqlite3_value_int64(value))));
    case tsql::TypeKind::Int:
    case tsql::TypeKind::BigInt:
      return rows_->Add(IntegerValue(sqlite3_value_int64(value), type));
    case tsql::TypeKind::Decimal:
    case tsql::TypeKind::Money:
    case tsql::TypeKind::SmallMoney:
      // A key has the digits that count and no others.
      return rows_->Add(Variant::Decimal(TextOf(value)));
    case tsql::TypeKind::Float:
      return rows_->Add(Variant(sqlite3_value_double(value)));
    case tsql::TypeKind::Real:
      return rows_->Add(Variant(static_cast<float>(sqlite3_value_double(value))));
    case tsql::TypeKind::DateTime:
    case tsql::TypeKind::SmallDateTime:
    case tsql::TypeKind::Date:
    case tsql::TypeKind::DateTime2:
      return rows_->Add(DateValue(TextOf(value)));
    default:
      return rows_->AddText(TextOf(value));
  }
}

Variant RowReader::DateValue(std::string_view text) {
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
