#include "platform/database/embedded/embedded_account.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/embedded_connection.h"
#include "platform/database/embedded/functions.h"

namespace rebate {
namespace {

constexpr std::int64_t kApplicationId = 0x52424154;  // marks a SQLite file as an account
constexpr std::int64_t kVersion = 1;                 // of what stands in the file beside the tables

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kConnection, "", std::move(description));
}

DatabaseHandle OpenFile(const Text& path, std::chrono::milliseconds lock_wait) {
  sqlite3* raw = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  const int result = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  DatabaseHandle database(raw);
  if (result != SQLITE_OK) throw SqliteError(raw, result, path);
  sqlite3_busy_timeout(raw, static_cast<int>(lock_wait.count()));
  // Text in double quotes is a name and nothing else.
  sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(raw, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  RegisterFunctions(raw);
  return database;
}

std::int64_t ReadNumber(sqlite3* database, std::string_view sql, const Text& path) {
  const StatementHandle statement = Prepare(database, sql, path);
  const int result = sqlite3_step(statement.get());
  if ((result & 0xFF) == SQLITE_NOTADB)
    Refuse("The file " + path + " is no account: it is no database; `rebate init` makes an account in a new file.");
  if (result != SQLITE_ROW) throw SqliteError(database, result, path);
  return sqlite3_column_int64(statement.get(), 0);
}

// Refuses a path where no account file can be, before SQLite touches anything there.
void CheckFile(const Text& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    Refuse("The account " + path + " does not exist; `rebate init " + path + "` makes an account.");
  }
  if (S_ISDIR(status.st_mode))
    Refuse("The path " + path + " is a directory; an account is a file, and `rebate init` makes one.");
  if (!S_ISREG(status.st_mode)) Refuse("The path " + path + " is no file; an account is one.");
  // The bits are looked at, too, for a user to whom they mean nothing.
  const bool writable = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0 && access(path.c_str(), R_OK | W_OK) == 0;
  if (!writable) Refuse("The account " + path + " can't be written; give yourself the permission to write the file.");
}

void CheckAccount(sqlite3* database, const Text& path) {
  const std::int64_t id = ReadNumber(database, "PRAGMA application_id", path);
  if (id != kApplicationId) {
    Refuse("The database " + path + " is no account; `rebate init` makes an account in a new file.");
  }
  if (ReadNumber(database, "PRAGMA user_version", path) > kVersion) {
    Refuse("The account " + path + " was made by a newer version; use that one, or a newer one, to open it.");
  }
}

void Configure(sqlite3* database, const Text& path) {
  Run(database, "PRAGMA journal_mode=WAL", path);
  // A committed save survives a power failure.
  Run(database, "PRAGMA synchronous=FULL", path);
  Run(database, "PRAGMA cache_size=-32000", path);
  Run(database, "PRAGMA temp_store=MEMORY", path);
  // Temporary tables stand in a database of their own: a change in SQLite's temporary schema would make it prepare
  // every statement of the connection anew.
  Run(database, "ATTACH ':memory:' AS tempdb", path);
}

void BuildAccount(sqlite3* database, const Text& path) {
  Run(database, "PRAGMA journal_mode=WAL", path);
  Run(database,
      "BEGIN IMMEDIATE; CREATE TABLE " + Text(kViewTable) +
          "(name TEXT NOT NULL PRIMARY KEY COLLATE NOCASE, columns TEXT NOT NULL, source TEXT NOT NULL) WITHOUT ROWID;"
          "PRAGMA application_id=" +
          std::to_string(kApplicationId) + ";PRAGMA user_version=" + std::to_string(kVersion) + ";COMMIT",
      path);
}

void RemoveAccount(const Text& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    std::error_code ignored;
    std::filesystem::remove(path + suffix, ignored);
  }
}

}  // namespace

ConnectionRef OpenEmbedded(const Text& path, std::chrono::milliseconds lock_wait) {
  CheckFile(path);
  DatabaseHandle database = OpenFile(path, lock_wait);
  CheckAccount(database.get(), path);
  Configure(database.get(), path);
  return New<EmbeddedConnection>(std::move(database), path);
}

ConnectionRef CreateEmbedded(const Text& path, std::chrono::milliseconds lock_wait) {
  // The file is made here and not by SQLite, so that of two that try only one gets to build.
  const int file = open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0644);
  if (file < 0) {
    const std::error_code error(errno, std::generic_category());
    if (error == std::errc::file_exists)
      Refuse("There is something at " + path + " already; a new account needs a path of its own.");
    Refuse("The account " + path + " can't be made: " + error.message() + ".");
  }
  close(file);
  try {
    DatabaseHandle database = OpenFile(path, lock_wait);
    BuildAccount(database.get(), path);
    Configure(database.get(), path);
    return New<EmbeddedConnection>(std::move(database), path);
  } catch (...) {
    RemoveAccount(path);
    throw;
  }
}

}  // namespace rebate
