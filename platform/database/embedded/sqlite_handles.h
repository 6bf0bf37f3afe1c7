#pragma once

#include <sqlite3.h>

#include <memory>
#include <new>
#include <string_view>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/eval/value.h"
#include "platform/values/types.h"

namespace rebate {

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabase>;

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Resets a statement when its run is over, however it ends, so that no lock outlives it.
class RunningStatement {
 public:
  explicit RunningStatement(sqlite3_stmt* statement) : statement_(statement) {}
  RunningStatement(const RunningStatement&) = delete;
  RunningStatement& operator=(const RunningStatement&) = delete;
  ~RunningStatement() { sqlite3_reset(statement_); }

 private:
  sqlite3_stmt* statement_;
};

// The error that `result` and the database's last message tell: one that a function of ours raised, as it was raised; a
// lock waited for too long; a file that is damaged, full, or can't be read or written; or a refused statement. None of
// SQLite's own words is in it. `path` names the account.
Error SqliteError(sqlite3* database, int result, const Text& path);

// What SqliteError knows one of our errors by, where a function or a table of ours hands SQLite a message.
Text MarkedMessage(const Error& error);
// In a handler: ends a call of one of our functions with what was raised, which SqliteError gives again.
void GiveCurrentError(sqlite3_context* context) noexcept;

// Runs the body of one of our functions and turns what it raises into the error of the call.
template <typename Body>
void Guarded(sqlite3_context* context, const Body& body) noexcept {
  try {
    body();
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  } catch (...) {
    GiveCurrentError(context);
  }
}

// Raises what SqliteError makes of a result other than SQLITE_OK, of a call that no message comes with.
void NeedDone(int result);

// Prepares one statement for repeated use; raises SqliteError.
StatementHandle Prepare(sqlite3* database, std::string_view sql, const Text& path);
// Runs statements without results; raises SqliteError.
void Run(sqlite3* database, const Text& sql, const Text& path);

// Binds a value to `?index`; raises where it has no room. Its text must stay where it is until the statement is bound
// anew or gone.
void Bind(sqlite3_stmt* statement, int index, const tsql::Value& value);
void Bind(sqlite3_stmt* statement, int index, std::string_view text);
void Bind(sqlite3_stmt* statement, int index, std::int64_t number);
void BindNull(sqlite3_stmt* statement, int index);
// The text of a column of the current row, or of a function's argument, in SQLite's memory; empty for a Null. Raises
// std::bad_alloc where there is no memory for it.
std::string_view ColumnText(sqlite3_stmt* statement, int column);
std::string_view TextOf(sqlite3_value* value);

// One question with its rows: `while (query.Next()) ... query.TextAt(0)`.
class RowQuery {
 public:
  template <typename... Parameters>
  RowQuery(sqlite3* database, const Text& path, std::string_view sql, const Parameters&... parameters)
      : database_(database), path_(path), statement_(Prepare(database, sql, path)) {
    int index = 0;
    (BindCopy(++index, parameters), ...);
  }

  // Whether there is another row; raises SqliteError where the account can't tell.
  bool Next();
  Text TextAt(int column) const { return Text(ColumnText(statement_.get(), column)); }
  std::int64_t NumberAt(int column) const { return sqlite3_column_int64(statement_.get(), column); }
  bool IsNull(int column) const { return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL; }

 private:
  void BindCopy(int index, std::string_view text);
  void BindCopy(int index, std::int64_t number) { Bind(statement_.get(), index, number); }

  sqlite3* database_;
  Text path_;
  StatementHandle statement_;
};

}  // namespace rebate
