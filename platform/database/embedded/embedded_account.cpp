#include "platform/database/embedded/embedded_account.h"

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/account_file.h"
#include "platform/database/embedded/account_upgrade.h"
#include "platform/database/embedded/embedded_connection.h"
#include "platform/files/file_placing.h"
#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

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

}  // namespace

ConnectionRef OpenEmbedded(const Text& path, std::chrono::milliseconds lock_wait) {
  CheckAccountFile(path);
  DatabaseHandle database = OpenAccountFile(path, lock_wait);
  const std::int64_t version = NeedAccount(database.get(), path);
  Configure(database.get(), path);
  if (version < kAccountVersion) UpgradeAccount(database.get(), path);
  return New<EmbeddedConnection>(std::move(database), path, lock_wait);
}

bool IsOfFormerVersion(const Text& path) {
  CheckAccountFile(path);
  const DatabaseHandle database = OpenAccountFile(path, kLockWait);
  return NeedAccount(database.get(), path) < kAccountVersion;
}

Text EngineVersion() {
  return Text("SQLite ") + sqlite3_libversion();
}

ConnectionRef CreateEmbedded(const Text& path, std::chrono::milliseconds lock_wait) {
  // The file is made here and not by SQLite, so that of two that try only one gets to build.
  if (const std::error_code error = files::CreateNew(path)) RefuseAccountMaking(path, error);
  try {
    DatabaseHandle database = OpenAccountFile(path, lock_wait);
    BuildAccount(database.get(), path);
    Configure(database.get(), path);
    return New<EmbeddedConnection>(std::move(database), path, lock_wait);
  } catch (...) {
    RemoveAccountFiles(path);
    throw;
  }
}

AccountInMaking::AccountInMaking(const Text& path, std::chrono::milliseconds lock_wait) : path_(path) {
  if (files::IsTaken(path)) RefuseTakenPath(path);
  RefuseLeftJournal(path);
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
  if (!making_.empty()) RemoveAccountFiles(making_);
}

void AccountInMaking::Finish() {
  // The last connection writes everything to the file itself.
  connection_ = nullptr;
  if (files::KindOf(making_ + "-wal") != files::Kind::Missing) {
    RefuseAccount("The account " + path_ + " can't be made: its file can't be completed.");
  }
  RefuseLeftJournal(path_);
  if (const std::error_code error = files::MoveToFreeName(making_, path_)) RefuseAccountMaking(path_, error);
  making_.clear();
  files::SyncFolderOf(path_);
}

}  // namespace rebate
