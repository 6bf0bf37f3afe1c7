#pragma once

#include <optional>
#include <set>

#include "platform/database/embedded/account_catalog.h"

namespace rebate {

// What the statements of one connection share: the account, its transaction and the values behind @@identity and its
// like.
//
// A unit of work and `begin tran` are SQLite's one transaction: it begins with the first statement, as a reader if that
// only reads, as the writer at once if not.
class Session {
 public:
  Session(DatabaseHandle database, Text path);

  sqlite3* database() const { return database_.get(); }
  const Text& path() const { return path_; }
  AccountCatalog& catalog() { return catalog_; }

  // ---- the unit of work ----
  void BeginWork();
  void CommitWork();
  void RollbackWork() noexcept;
  // Begins the transaction of an open unit where it isn't begun; without a unit it does nothing.
  void NeedTransaction(bool reads_only);

  // ---- transactions in texts ----
  void BeginTransaction();
  void CommitTransaction();
  void RollbackTransaction();
  Long TransactionCount() const { return nesting_ + (unit_open_ ? 1 : 0); }

  // Runs `work` so that it leaves all or nothing.
  template <typename Work>
  void Atomically(const Work& work) {
    const AccountCatalog::Mark mark = catalog_.MakeMark();
    Run(database(), "SAVEPOINT statement", path_);
    try {
      work();
      Run(database(), "RELEASE statement", path_);
    } catch (...) {
      UndoStatement(mark);
      throw;
    }
    if (sqlite3_get_autocommit(database()) != 0) catalog_.Committed();
  }

  // Notes that a statement failed: SQLite gives some transactions up by itself.
  void NoticeFailure() noexcept;

  std::optional<std::int64_t> identity;
  std::int64_t row_count = 0;
  std::set<Text> identity_insert;  // tables that take numbers for their identity column

 private:
  void Begin(bool reads_only);
  void Step(sqlite3_stmt* statement);
  void UndoStatement(const AccountCatalog::Mark& mark) noexcept;
  void Rollback() noexcept;
  bool InTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }

  DatabaseHandle database_;
  Text path_;
  AccountCatalog catalog_;
  StatementHandle begin_reader_, begin_writer_, commit_, rollback_;
  bool unit_open_ = false;
  bool begun_ = false;  // the transaction, for the unit or for `begin tran`
  bool lost_ = false;   // SQLite gave the transaction up
  Long nesting_ = 0;    // of `begin tran`
};

}  // namespace rebate
