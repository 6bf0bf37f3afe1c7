#include "platform/database/embedded/session.h"

namespace rebate {

Session::Session(DatabaseHandle database, Text path, std::chrono::milliseconds lock_wait)
    : database_(std::move(database)),
      path_(std::move(path)),
      catalog_(database_.get(), path_),
      turn_(WriterQueue::Of(path_), lock_wait),
      begin_reader_(Prepare(database_.get(), "BEGIN", path_)),
      begin_writer_(Prepare(database_.get(), "BEGIN IMMEDIATE", path_)),
      commit_(Prepare(database_.get(), "COMMIT", path_)),
      rollback_(Prepare(database_.get(), "ROLLBACK", path_)),
      savepoint_(Prepare(database_.get(), "SAVEPOINT statement", path_)),
      release_(Prepare(database_.get(), "RELEASE statement", path_)) {}

void Session::Step(sqlite3_stmt* statement) {
  const RunningStatement running(statement);
  const int result = sqlite3_step(statement);
  if (result != SQLITE_DONE) throw SqliteError(database(), result, path_);
}

void Session::Begin(bool reads_only) {
  if (!reads_only && !turn_.Take()) throw SqliteError(nullptr, SQLITE_BUSY, path_);
  try {
    Step(reads_only ? begin_reader_.get() : begin_writer_.get());
  } catch (...) {
    turn_.Give();
    throw;
  }
  begun_ = true;
  try {
    catalog_.NoticeChanges();
  } catch (...) {
    Rollback();
    throw;
  }
}

void Session::Rollback() noexcept {
  if (InTransaction()) {
    sqlite3_step(rollback_.get());
    sqlite3_reset(rollback_.get());
  }
  if (InTransaction()) sound_ = false;
  catalog_.RolledBack();
  lost_ = false;
  NoteEnd();
}

// Where it fails, everything is undone.
void Session::Commit() {
  try {
    if (InTransaction()) Step(commit_.get());
  } catch (...) {
    Rollback();
    throw;
  }
  catalog_.Committed();
  NoteEnd();
}

void Session::EndUnit() noexcept {
  unit_open_ = false;
  nesting_ = 0;
  // One text's setting must not outlive the call that it was for.
  catalog_.ForgetIdentityInsert();
}

void Session::BeginWork() {
  if (unit_open_ || begun_) Rollback();
  EndUnit();
  unit_open_ = true;
}

void Session::NeedSound() const {
  if (sound_) [[likely]]
    return;
  throw Error(database_error::kConnection, "",
              "The connection to the account " + path_ +
                  " can't be used any more, after an error that it couldn't undo: connect anew.");
}

void Session::NeedTransaction(bool reads_only) {
  NeedSound();
  if (lost_) {
    throw Error(database_error::kStatement, "",
                "The transaction was undone by an earlier error and can take no more statements.");
  }
  if (unit_open_ && !begun_) Begin(reads_only);
}

void Session::CommitWork() {
  if (!unit_open_) return;
  if (!sound_) {
    RollbackWork();
    NeedSound();
  }
  if (lost_) {
    RollbackWork();
    throw Error(database_error::kStatement, "",
                "The transaction was undone by an earlier error and can't be committed.");
  }
  try {
    Commit();
  } catch (...) {
    EndUnit();
    throw;
  }
  EndUnit();
}

void Session::RollbackWork() noexcept {
  if (!unit_open_) return;
  Rollback();
  EndUnit();
}

void Session::BeginTransaction() {
  if (!begun_ && !unit_open_) Begin(false);
  ++nesting_;
}

void Session::CommitTransaction() {
  if (TransactionCount() == 0) {
    throw Error(database_error::kStatement, "",
                "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
  if (TransactionCount() > 1) {
    --nesting_;
    return;
  }
  nesting_ = 0;
  try {
    Commit();
  } catch (...) {
    // What the unit did is gone: it can't go on as if nothing had happened.
    lost_ = unit_open_;
    throw;
  }
}

void Session::RollbackTransaction() {
  if (TransactionCount() == 0) {
    throw Error(database_error::kStatement, "",
                "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
  Rollback();
  nesting_ = 0;
}

void Session::UndoStatement(AccountCatalog::Mark&& mark) noexcept {
  if (InTransaction() &&
      sqlite3_exec(database(), "ROLLBACK TO statement; RELEASE statement", nullptr, nullptr, nullptr) != SQLITE_OK) {
    sound_ = false;
  }
  catalog_.ReturnTo(std::move(mark));
  NoticeFailure();
}

void Session::NoticeFailure() noexcept {
  if (!begun_ || InTransaction()) return;
  catalog_.RolledBack();
  NoteEnd();
  lost_ = unit_open_;
  nesting_ = 0;
}

}  // namespace rebate
