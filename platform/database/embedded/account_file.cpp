#include "platform/database/embedded/account_file.h"

#include "platform/database/embedded/account_upgrade.h"
#include "platform/database/embedded/functions.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

std::int64_t ReadNumber(sqlite3* database, std::string_view sql, const Text& path) {
  const StatementHandle statement = Prepare(database, sql, path);
  const int result = sqlite3_step(statement.get());
  if ((result & 0xFF) == SQLITE_NOTADB)
    RefuseAccount("The file " + path +
                  " is no account: it is no database; `rebate init` makes an account in a new file.");
  if (result != SQLITE_ROW) throw SqliteError(database, result, path);
  return sqlite3_column_int64(statement.get(), 0);
}

// The engine's filter in front of an index that it makes for one statement goes by a text's length, up to version 3.40
// at least, and so misses texts that are equal but for width or blanks at their end.
void ForgoFilters(sqlite3* database) {
  constexpr unsigned kBloomFilter = 0x00080000;  // of the engine's optimizations, which no header names
  sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, database, kBloomFilter);
}

}  // namespace

void RefuseAccount(Text description) {
  throw Error(database_error::kConnection, "", std::move(description));
}

void RefuseTakenPath(const Text& path) {
  RefuseAccount("There is something at " + path + " already; a new account needs a path of its own.");
}

void RefuseAccountMaking(const Text& path, const std::error_code& error) {
  if (error == std::errc::file_exists) RefuseTakenPath(path);
  RefuseAccount("The account " + path + " can't be made: " + error.message() + ".");
}

DatabaseHandle OpenAccountFile(const Text& path, std::chrono::milliseconds lock_wait) {
  sqlite3* raw = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  const int result = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  DatabaseHandle database(raw);
  if (result != SQLITE_OK) throw SqliteError(raw, result, path);
  sqlite3_busy_timeout(raw, static_cast<int>(lock_wait.count()));
  // Text in double quotes is a name and nothing else.
  sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  ForgoFilters(raw);
  RegisterFunctions(raw);
  return database;
}

void CheckAccountFile(const Text& path) {
  const files::Kind kind = files::KindOf(path);
  if (kind == files::Kind::Missing) {
    RefuseAccount("The account " + path + " does not exist; `rebate init " + path + "` makes an account.");
  }
  if (kind == files::Kind::Directory)
    RefuseAccount("The path " + path + " is a directory; an account is a file, and `rebate init` makes one.");
  if (kind != files::Kind::File) RefuseAccount("The path " + path + " is no file; an account is one.");
  if (!files::CanBeChanged(path))
    RefuseAccount("The account " + path + " can't be written; give yourself the permission to write the file.");
}

std::int64_t NeedAccount(sqlite3* database, const Text& path) {
  const std::int64_t id = ReadNumber(database, "PRAGMA application_id", path);
  if (id != kApplicationId) {
    RefuseAccount("The database " + path + " is no account; `rebate init` makes an account in a new file.");
  }
  const std::int64_t version = ReadNumber(database, "PRAGMA user_version", path);
  if (version > kAccountVersion) {
    RefuseAccount("The account " + path + " was made by a newer version; use that one, or a newer one, to open it.");
  }
  return version;
}

void RefuseLeftJournal(const Text& path) {
  for (const char* suffix : {"-wal", "-journal"}) {
    if (!files::IsTaken(path + suffix)) continue;
    RefuseAccount("Nothing can be put at " + path + ", since " + path + suffix +
                  " stands beside it: the account there is in use, was broken off, or was moved away without it. Open "
                  "and leave that account once, its files together, or name another path.");
  }
}

void RemoveAccountFiles(const Text& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) files::Remove(path + suffix);
}

}  // namespace rebate
