#pragma once

#include <sqlite3.h>

#include <memory>
#include <string_view>

#include "platform/automation/error.h"
#include "platform/automation/types.h"
#include "platform/database/tsql/value.h"

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

// The error of SQLite's that `result` and the database's last message tell: a lock waited for too long, a file that
// can't be read or written, or else a refused statement. `path` names the account.
Error SqliteError(sqlite3* database, int result, const Text& path);

// Prepares one statement for repeated use; raises SqliteError.
StatementHandle Prepare(sqlite3* database, std::string_view sql, const Text& path);
// Runs statements without results; raises SqliteError.
void Run(sqlite3* database, const Text& sql, const Text& path);

// Binds a value to `?index`. Its text must stay where it is until the statement is bound anew or gone.
void Bind(sqlite3_stmt* statement, int index, const tsql::Value& value);
std::string_view ColumnText(sqlite3_stmt* statement, int column);

}  // namespace rebate
