#include "platform/database/embedded/embedded_account.h"

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/account_upgrade.h"
#include "platform/database/embedded/embedded_connection.h"
#include "platform/database/embedded/functions.h"
#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

constexpr std::int64_t kApplicationId = 0x52424154;  // marks a SQLite file as an account

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
  const files::Kind kind = files::KindOf(path);
  if (kind == files::Kind::Missing) {
    Refuse("The account " + path + " does not exist; `rebate init " + path + "` makes an account.");
  }
  if (kind == files::Kind::Directory)
    Refuse("The path " + path + " is a directory; an account is a file, and `rebate init` makes one.");
  if (kind != files::Kind::File) Refuse("The path " + path + " is no file; an account is one.");
  if (!files::CanBeChanged(path))
    Refuse("The account " + path + " can't be written; give yourself the permission to write the file.");
}

// Gives the version. A database that is no account is left untouched.
std::int64_t NeedAccount(sqlite3* database, const Text& path) {
  const std::int64_t id = ReadNumber(database, "PRAGMA application_id", path);
  if (id != kApplicationId) {
    Refuse("The database " + path + " is no account; `rebate init` makes an account in a new file.");
  }
  const std::int64_t version = ReadNumber(database, "PRAGMA user_version", path);
  if (version > kAccountVersion) {
    Refuse("The account " + path + " was made by a newer version; use that one, or a newer one, to open it.");
  }
  return version;
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
          "(name TEXT NOT NULL PRIMARY KEY COLLATE NOCASE, columns TEXT NOT NULL, source TEXT NOT NULL) WITHOUT "
          "ROWID;" +
          CounterTableStatement() + ";PRAGMA application_id=" + std::to_string(kApplicationId) +
          ";PRAGMA user_version=" + std::to_string(kAccountVersion) + ";COMMIT",
      path);
}

[[noreturn]] void RefuseTaken(const Text& path) {
  Refuse("There is something at " + path + " already; a new account needs a path of its own.");
}

[[noreturn]] void RefuseMaking(const Text& path, const std::error_code& error) {
  if (error == std::errc::file_exists) RefuseTaken(path);
  Refuse("The account " + path + " can't be made: " + error.message() + ".");
}

void RemoveAccount(const Text& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) files::Remove(path + suffix);
}

}  // namespace

ConnectionRef OpenEmbedded(const Text& path, std::chrono::milliseconds lock_wait) {
  CheckFile(path);
  DatabaseHandle database = OpenFile(path, lock_wait);
  const std::int64_t version = NeedAccount(database.get(), path);
  Configure(database.get(), path);
  if (version < kAccountVersion) UpgradeAccount(database.get(), path);
  return New<EmbeddedConnection>(std::move(database), path);
}

ConnectionRef CreateEmbedded(const Text& path, std::chrono::milliseconds lock_wait) {
  // The file is made here and not by SQLite, so that of two that try only one gets to build.
  if (const std::error_code error = files::CreateNew(path)) RefuseMaking(path, error);
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

AccountInMaking::AccountInMaking(const Text& path, std::chrono::milliseconds lock_wait) : path_(path) {
  if (files::IsTaken(path)) RefuseTaken(path);
  making_ = files::NameOfThisProcess(path + ".making");
  try {
    connection_ = CreateEmbedded(making_, lock_wait);
  } catch (Error& error) {
    error.description = Replace(error.description, making_, path_);
    throw;
  }
}

AccountInMaking::~AccountInMaking() {
  connection_ = nullptr;
  if (!making_.empty()) RemoveAccount(making_);
}

void AccountInMaking::Finish() {
  // The last connection writes everything to the file itself.
  connection_ = nullptr;
  if (files::KindOf(making_ + "-wal") != files::Kind::Missing) {
    Refuse("The account " + path_ + " can't be made: its file can't be completed.");
  }
  if (const std::error_code error = files::MoveToFreeName(making_, path_)) RefuseMaking(path_, error);
  making_.clear();
}

}  // namespace rebate
