#pragma once

#include <optional>

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/writer_turn.h"

namespace rebate {

// What the statements of one connection share: the account, its transaction and the values behind @@identity and its
// like.
//
// A unit of work and `begin tran` are SQLite's one transaction: it begins with the first statement, as a reader if that
// only reads, as the writer at once if not. They nest as a server counts: an open unit is one level, each `begin tran`
// another one.
class Session {
 public:
  // A writer waits for those of its process up to `lock_wait`, as SQLite does for those of others.
  Session(DatabaseHandle database, Text path, std::chrono::milliseconds lock_wait);

  sqlite3* database() const { return database_.get(); }
  const Text& path() const { return path_; }
  AccountCatalog& catalog() { return catalog_; }

  // ---- the unit of work ----
  void BeginWork();
  void CommitWork();
  void RollbackWork() noexcept;
  // Begins the transaction of an open unit where it isn't begun; without a unit it does nothing.
  void NeedTransaction(bool reads_only);

  // Whether a unit of work is open, so that what a statement does stands or goes with others.
  bool InUnit() const { return unit_open_; }

  // ---- transactions in texts; each raises the server's error where no transaction is open ----
  void BeginTransaction();
  // Ends one level. At the outermost one the work stands; an open unit goes on with a new transaction.
  void CommitTransaction();
  // Undoes everything down to the outermost level; an open unit goes on with a new transaction.
  void RollbackTransaction();
  // @@trancount.
  Long TransactionCount() const { return nesting_ + (unit_open_ ? 1 : 0); }

  // Runs `work` so that it leaves all or nothing.
  template <typename Work>
  void Atomically(const Work& work) {
    if (InTransaction()) return InSavepoint(work);
    // The writer at once: what the work finds is what it changes.
    Begin(false);
    try {
      work();
      Commit();
    } catch (...) {
      Rollback();
      throw;
    }
  }

  // Notes that a statement failed: SQLite gives some transactions up by itself.
  void NoticeFailure() noexcept;

  // False where a failure may have left something that couldn't be undone: nothing runs on it any more.
  bool sound() const { return sound_; }
  void Distrust() noexcept { sound_ = false; }

  std::optional<std::int64_t> identity;
  std::int64_t row_count = 0;

 private:
  template <typename Work>
  void InSavepoint(const Work& work) {
    AccountCatalog::Mark mark = catalog_.MakeMark();
    Step(savepoint_.get());
    try {
      work();
      Step(release_.get());
    } catch (...) {
      UndoStatement(std::move(mark));
      throw;
    }
  }

  void NeedSound() const;
  void Begin(bool reads_only);
  void Step(sqlite3_stmt* statement);
  void Commit();
  void EndUnit() noexcept;
  void UndoStatement(AccountCatalog::Mark&& mark) noexcept;
  void Rollback() noexcept;
  // The transaction is over.
  void NoteEnd() noexcept {
    begun_ = false;
    turn_.Give();
  }
  bool InTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }

  DatabaseHandle database_;
  Text path_;
  AccountCatalog catalog_;
  WriterTurn turn_;
  StatementHandle begin_reader_, begin_writer_, commit_, rollback_, savepoint_, release_;
  bool unit_open_ = false;
  bool begun_ = false;  // the transaction, for the unit or for `begin tran`
  bool lost_ = false;   // SQLite gave the transaction up
  bool sound_ = true;
  Long nesting_ = 0;  // of `begin tran`
};

}  // namespace rebate
