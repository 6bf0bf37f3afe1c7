#include "platform/database/embedded/sqlite_handles.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>

namespace rebate {
namespace {

// Stands in front of the number and the text of an error that a function of ours raised.
constexpr char kOwnError = '\x01';

bool HoldsAny(std::string_view message, std::initializer_list<std::string_view> words) {
  return std::any_of(words.begin(), words.end(),
                     [&](std::string_view word) { return message.find(word) != std::string_view::npos; });
}

Error OwnError(std::string_view message) {
  message.remove_prefix(1);
  Long number = database_error::kStatement;
  const auto [end, error] = std::from_chars(message.data(), message.data() + message.size(), number);
  message.remove_prefix(static_cast<std::size_t>(end - message.data()));
  if (!message.empty()) message.remove_prefix(1);
  return Error(number, "", Text(message));
}

Error Damaged(const Text& path) {
  return Error(database_error::kConnection, "",
               "The account " + path + " is damaged: put the last good backup of the file in its place.");
}

Error Unreachable(const Text& path, std::string_view reason, int result) {
  return Error(
      database_error::kConnection, "",
      "The account " + path + " can't be read or written: " + Text(reason) + " (" + std::to_string(result) + ").");
}

// "no such table: main.t" gives "t".
Text NameBehind(std::string_view message, std::string_view words) {
  message.remove_prefix(std::min(message.find(words) + words.size(), message.size()));
  for (std::string_view schema : {"main.", "tempdb."}) {
    if (message.starts_with(schema)) message.remove_prefix(schema.size());
  }
  return Text(message);
}

// A statement that SQLite refuses as such. The front end has checked its names and types, so what is left is a file
// whose schema doesn't hold what it should, a table that another process has just dropped, and the engine's limits.
Error StatementError(std::string_view message, int result, const Text& path) {
  if (HoldsAny(message, {"malformed", "file format", "main.account_", "no such collation", "corrupt"})) {
    return Damaged(path);
  }
  if (HoldsAny(message, {"no such table: "})) {
    return Error(database_error::kStatement, "",
                 "Invalid object name '" + NameBehind(message, "no such table: ") + "'.");
  }
  if (HoldsAny(message, {"integer overflow"})) {
    return Error(database_error::kStatement, "",
                 "Arithmetic overflow error converting expression to data type bigint.");
  }
  if (HoldsAny(message, {"too many", "too large", "too deep", "stack overflow", "at most"})) {
    return Error(database_error::kStatement, "",
                 "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller "
                 "queries.");
  }
  return Error(database_error::kStatement, "",
               "The account " + path + " can't carry the statement out (" + std::to_string(result) + ").");
}

}  // namespace

Error SqliteError(sqlite3* database, int result, const Text& path) {
  const std::string_view message = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(result);
  if (message.starts_with(kOwnError)) return OwnError(message);
  switch (result & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Error(database_error::kTimeout, "",
                   "Lock request time out period exceeded: another process is writing to " + path + ".");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
      return Damaged(path);
    case SQLITE_FULL:
      return Unreachable(path, "the disk is full", result);
    case SQLITE_IOERR:
      return Unreachable(path, "the disk gives an error", result);
    case SQLITE_CANTOPEN:
      return Unreachable(path, "the file, or one beside it, can't be opened", result);
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return Unreachable(path, "the file, or its directory, can't be written", result);
    case SQLITE_PROTOCOL:
      return Unreachable(path, "the file can't be locked", result);
    case SQLITE_NOMEM:
      return Error(database_error::kMemory, "", "There is insufficient system memory to run this query.");
    case SQLITE_TOOBIG:
      return Error(database_error::kStatement, "", "The text is longer than an embedded account holds.");
    default:
      return StatementError(message, result, path);
  }
}

Text MarkedMessage(const Error& error) {
  return kOwnError + std::to_string(error.number) + ' ' + error.description;
}

void GiveCurrentError(sqlite3_context* context) noexcept {
  try {
    const Text message = MarkedMessage(CurrentError());
    sqlite3_result_error(context, message.c_str(), static_cast<int>(message.size()));
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

void NeedDone(int result) {
  if (result != SQLITE_OK) throw SqliteError(nullptr, result, "");
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
      NeedDone(sqlite3_bind_null(statement, index));
      break;
    case tsql::Value::Kind::Integer:
      NeedDone(sqlite3_bind_int64(statement, index, value.integer));
      break;
    case tsql::Value::Kind::Real:
      NeedDone(sqlite3_bind_double(statement, index, value.real));
      break;
    case tsql::Value::Kind::Decimal: {
      const Text key = value.decimal.ToKey();
      NeedDone(sqlite3_bind_text(statement, index, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT));
      break;
    }
    case tsql::Value::Kind::Text:
      Bind(statement, index, value.text);
      break;
  }
}

void Bind(sqlite3_stmt* statement, int index, std::string_view text) {
  NeedDone(sqlite3_bind_text(statement, index, text.data() != nullptr ? text.data() : "", static_cast<int>(text.size()),
                             SQLITE_STATIC));
}

void Bind(sqlite3_stmt* statement, int index, std::int64_t number) {
  NeedDone(sqlite3_bind_int64(statement, index, number));
}

void BindNull(sqlite3_stmt* statement, int index) {
  NeedDone(sqlite3_bind_null(statement, index));
}

std::string_view ColumnText(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  if (text == nullptr) [[unlikely]] {
    // A Null, or a text for which there is no memory.
    if (sqlite3_errcode(sqlite3_db_handle(statement)) == SQLITE_NOMEM) throw std::bad_alloc();
    return "";
  }
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) [[unlikely]] {
    if (sqlite3_value_type(value) != SQLITE_NULL) throw std::bad_alloc();
    return "";
  }
  return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

bool RowQuery::Next() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW || result == SQLITE_DONE) return result == SQLITE_ROW;
  throw SqliteError(database_, result, path_);
}

void RowQuery::BindCopy(int index, std::string_view text) {
  NeedDone(sqlite3_bind_text(statement_.get(), index, text.data() != nullptr ? text.data() : "",
                             static_cast<int>(text.size()), SQLITE_TRANSIENT));
}

}  // namespace rebate
