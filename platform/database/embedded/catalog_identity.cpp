#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/constraint_error.h"

// How the account's catalog draws the numbers of identity columns that SQLite doesn't count, and who may give them.
namespace rebate {
namespace {

using tsql::LowerKey;
using tsql::TableInfo;
using tsql::TypeKind;

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

bool Fits(std::int64_t number, const tsql::DataType& type) {
  switch (type.kind) {
    case TypeKind::TinyInt:
      return number >= 0 && number <= 255;
    case TypeKind::SmallInt:
      return number >= -32768 && number <= 32767;
    case TypeKind::Int:
      return number >= -2147483648LL && number <= 2147483647LL;
    case TypeKind::Decimal: {
      std::int64_t bound = 1;
      for (int i = 0; i < type.precision && i < 18; ++i) bound *= 10;
      return type.precision > 18 || (number > -bound && number < bound);
    }
    default:
      return true;
  }
}

// Nothing where the next number has no place in 64 bits.
std::optional<std::int64_t> Next(const TableInfo& table, const std::optional<std::int64_t>& last) {
  if (!last) return table.identity_seed;
  std::int64_t next = 0;
  if (__builtin_add_overflow(*last, table.identity_step, &next)) return std::nullopt;
  return next;
}

}  // namespace

void AccountCatalog::GiveNextIdentity(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  auto* catalog = static_cast<AccountCatalog*>(sqlite3_user_data(context));
  Guarded(context, [&] { sqlite3_result_int64(context, catalog->NextIdentity(TextOf(arguments[0]))); });
}

std::int64_t AccountCatalog::NextIdentity(std::string_view key) {
  const auto temporary = temporary_.find(key);
  const bool kept_here = temporary != temporary_.end();
  const tsql::TablePtr table = kept_here ? temporary->second.table : FindPermanent(Text(key));
  const tsql::ColumnInfo* column = table ? table->Identity() : nullptr;
  if (column == nullptr) Refuse("Invalid object name '" + Text(key) + "'.");
  const std::optional<std::int64_t> next =
      Next(*table, kept_here ? temporary->second.counter->last : ReadCounter(*table));
  if (!next || !Fits(*next, column->type)) throw IdentityOverflow(column->type);
  if (kept_here) {
    temporary->second.counter->last = next;
  } else {
    WriteCounter(*table, next);
  }
  last_drawn_ = next;
  return *next;
}

std::optional<std::int64_t> AccountCatalog::AskNumber(const Text& sql) {
  RowQuery rows(database_, path_, sql);
  if (!rows.Next() || rows.IsNull(0)) return std::nullopt;
  return rows.NumberAt(0);
}

std::optional<std::int64_t> AccountCatalog::ReadCounter(const TableInfo& table) {
  if (table.temporary) return NeedTemporary(table).counter->last;
  if (!counter_reader_) {
    counter_reader_ =
        Prepare(database_, "SELECT last FROM main." + Text(tsql::kCounterTable) + " WHERE table_name=?1", path_);
  }
  const Text key = LowerKey(table.name);
  const RunningStatement running(counter_reader_.get());
  Bind(counter_reader_.get(), 1, std::string_view(key));
  const int result = sqlite3_step(counter_reader_.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) throw SqliteError(database_, result, path_);
  if (result == SQLITE_DONE || sqlite3_column_type(counter_reader_.get(), 0) == SQLITE_NULL) return std::nullopt;
  return sqlite3_column_int64(counter_reader_.get(), 0);
}

void AccountCatalog::WriteCounter(const TableInfo& table, std::optional<std::int64_t> last) {
  if (table.temporary) {
    NeedTemporary(table).counter->last = last;
    return;
  }
  if (!counter_writer_) {
    counter_writer_ =
        Prepare(database_, "UPDATE main." + Text(tsql::kCounterTable) + " SET last=?2 WHERE table_name=?1", path_);
  }
  const Text key = LowerKey(table.name);
  const RunningStatement running(counter_writer_.get());
  Bind(counter_writer_.get(), 1, std::string_view(key));
  if (last) {
    Bind(counter_writer_.get(), 2, *last);
  } else {
    BindNull(counter_writer_.get(), 2);
  }
  const int result = sqlite3_step(counter_writer_.get());
  if (result != SQLITE_DONE) throw SqliteError(database_, result, path_);
}

std::optional<std::int64_t> AccountCatalog::NoteInsert(const TableInfo& table, bool given) {
  const tsql::ColumnInfo* column = table.Identity();
  if (column == nullptr) return std::nullopt;
  const std::int64_t row = sqlite3_last_insert_rowid(database_);
  if (!table.counted_identity) return row;
  if (!given) return last_drawn_;
  const bool rises = table.identity_step > 0;
  const Text number = tsql::SqlName(column->name);
  const std::optional<std::int64_t> farthest =
      AskNumber(Text("SELECT CAST(") + (rises ? "max(" : "min(") + number + ") AS INTEGER) FROM " + table.SqlName());
  const std::int64_t last = ReadCounter(table).value_or(table.identity_seed - table.identity_step);
  if (farthest && (rises ? *farthest > last : *farthest < last)) WriteCounter(table, farthest);
  return AskNumber("SELECT CAST(" + number + " AS INTEGER) FROM " + table.SqlName() +
                   " WHERE rowid=" + std::to_string(row));
}

AccountCatalog::Counters AccountCatalog::MarkCounters() const {
  Counters counters;
  for (const auto& [name, table] : temporary_) {
    if (table.present && table.table->Identity() != nullptr) counters.emplace_back(table.counter, *table.counter);
  }
  return counters;
}

void AccountCatalog::ReturnTo(const Counters& counters) {
  for (const auto& [counter, stood] : counters) *counter = stood;
}

std::optional<std::int64_t> AccountCatalog::LastIdentity(std::string_view name) {
  const std::optional<tsql::ObjectName> object = NamedObject(name);
  const tsql::TablePtr table = object ? Find(*object) : nullptr;
  if (!table || table->temporary || table->Identity() == nullptr) return std::nullopt;
  if (table->counted_identity) return ReadCounter(*table).value_or(table->identity_seed);
  RowQuery drawn(database_, path_, "SELECT seq FROM main.sqlite_sequence WHERE name=?1 COLLATE NOCASE", table->name);
  return drawn.Next() ? drawn.NumberAt(0) : table->identity_seed;
}

void AccountCatalog::SetIdentityInsert(const tsql::ObjectName& name, bool on) {
  const tsql::TablePtr table = FindObject(*this, name);
  if (table->Identity() == nullptr) {
    Refuse("Table '" + table->name + "' does not have the identity property. Cannot perform SET operation.");
  }
  const Text key = LowerKey(table->name);
  if (!on) {
    if (identity_insert_ == key) identity_insert_.clear();
    return;
  }
  if (!identity_insert_.empty() && identity_insert_ != key) {
    tsql::ObjectName other;
    other.name = identity_insert_;
    const tsql::TablePtr holder = Find(other);
    Refuse("IDENTITY_INSERT is already ON for table '" + (holder ? FullName(*holder, path_) : identity_insert_) +
           "'. Cannot perform SET operation for table '" + table->name + "'.");
  }
  identity_insert_ = key;
}

void AccountCatalog::CheckIdentityInsert(const TableInfo& table, bool given) const {
  if (!given && identity_insert_.empty()) [[likely]]
    return;
  const bool on = identity_insert_ == LowerKey(table.name);
  if (on == given) return;
  Refuse(on ? "Explicit value must be specified for identity column in table '" + table.name +
                  "' either when IDENTITY_INSERT is set to ON or when a replication user is inserting into a NOT FOR "
                  "REPLICATION identity column."
            : "Cannot insert explicit value for identity column in table '" + table.name +
                  "' when IDENTITY_INSERT is set to OFF.");
}

}  // namespace rebate
