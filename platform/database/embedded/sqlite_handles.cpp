#include "platform/database/embedded/sqlite_handles.h"

namespace rebate {

Error SqliteError(sqlite3* database, int result, const Text& path) {
  const Text message = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(result);
  switch (result & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Error(database_error::kTimeout, "",
                   "Lock request time out period exceeded: another process is writing to " + path + ".");
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:
      return Error(database_error::kConnection, "",
                   "The account " + path + " can't be read or written: " + message + ".");
    default:
      return Error(database_error::kStatement, "", message);
  }
}

StatementHandle Prepare(sqlite3* database, std::string_view sql, const Text& path) {
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                        &statement, nullptr);
  if (result != SQLITE_OK) throw SqliteError(database, result, path);
  return StatementHandle(statement);
}

void Run(sqlite3* database, const Text& sql, const Text& path) {
  const int result = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) throw SqliteError(database, result, path);
}

void Bind(sqlite3_stmt* statement, int index, const tsql::Value& value) {
  switch (value.kind) {
    case tsql::Value::Kind::Null:
      sqlite3_bind_null(statement, index);
      break;
    case tsql::Value::Kind::Integer:
      sqlite3_bind_int64(statement, index, value.integer);
      break;
    case tsql::Value::Kind::Real:
      sqlite3_bind_double(statement, index, value.real);
      break;
    case tsql::Value::Kind::Text:
      sqlite3_bind_text(statement, index, value.text.data() != nullptr ? value.text.data() : "",
                        static_cast<int>(value.text.size()), SQLITE_STATIC);
      break;
  }
}

std::string_view ColumnText(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return {text != nullptr ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

}  // namespace rebate
