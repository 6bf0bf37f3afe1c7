#include "platform/database/odbc/odbc_account.h"

#include <memory>
#include <utility>

#include "platform/database/odbc/link.h"

namespace rebate {
namespace {

class OdbcConnection : public Connection {
 public:
  explicit OdbcConnection(const Text& connection_text)
      : settings_(odbc::Settings::Parse(connection_text)), link_(std::make_unique<odbc::Link>(settings_)) {}
  ~OdbcConnection() override { RollbackWork(); }

  RecordsetRef Execute(std::string_view text) override {
    if (unit_ == Unit::Lost) ThrowLost();
    if (!link_) link_ = std::make_unique<odbc::Link>(settings_);
    if (unit_ == Unit::Ready) Begin();
    try {
      RecordsetRef rows = link_->Run(text);
      work_stands_ = true;
      if (unit_ == Unit::Begun && link_->TextEndedTransaction()) BeginAnew();
      return rows;
    } catch (Error& error) {
      FaceFailure(error);
      throw;
    }
  }

  void BeginWork() override {
    RollbackWork();
    if (link_ && link_->IsDead()) link_ = nullptr;
    if (!link_) link_ = std::make_unique<odbc::Link>(settings_);
    unit_ = Unit::Ready;
  }

  void CommitWork() override {
    const Unit unit = std::exchange(unit_, Unit::None);
    if (unit == Unit::Lost) ThrowLost();
    if (unit != Unit::Begun) return;
    try {
      link_->Commit();
    } catch (Error& error) {
      FaceFailure(error);
      Undo();
      throw;
    }
    Leave();
  }

  void RollbackWork() noexcept override {
    if (std::exchange(unit_, Unit::None) == Unit::Begun) Undo();
  }

 private:
  // A unit is lost when the server has undone what it did so far: the rest of it must not run.
  enum class Unit { None, Ready, Begun, Lost };

  [[noreturn]] static void ThrowLost() {
    throw Error(database_error::kConnection, "ODBC",
                "The server has undone what was done earlier in this unit of work, which runs nothing more.");
  }

  void Begin() {
    unit_ = Unit::Begun;
    work_stands_ = false;
    try {
      link_->BeginTransaction();
    } catch (Error& error) {
      FaceFailure(error);
      Lose();
      throw;
    }
  }

  // Finds out what a failure means to the unit, and numbers it as a lost connection where it is one.
  void FaceFailure(Error& error) {
    const bool dead = link_->IsDead();
    if (dead && error.number != database_error::kTimeout) error.number = database_error::kConnection;
    if (dead || error.number == database_error::kConnection) {
      Lose();
    } else if (unit_ == Unit::Begun && link_->TransactionIsGone()) {
      // Some errors make a server undo the whole transaction. Where it held nothing yet, a new one may follow.
      BeginAnew();
      if (work_stands_) unit_ = Unit::Lost;
    }
  }

  // The server's transaction has ended: the next statement begins one.
  void BeginAnew() {
    Leave();
    unit_ = Unit::Ready;
  }

  void Lose() {
    link_ = nullptr;
    if (unit_ == Unit::Begun) unit_ = Unit::Lost;
  }

  void Undo() noexcept {
    if (!link_) return;
    try {
      link_->Rollback();
    } catch (...) {
      link_ = nullptr;
    }
    Leave();
  }

  // The work is done already: a connection that doesn't come out of its transaction is only given up.
  void Leave() noexcept {
    try {
      if (link_) link_->LeaveTransactions();
    } catch (...) {
      link_ = nullptr;
    }
  }

  odbc::Settings settings_;
  std::unique_ptr<odbc::Link> link_;  // null where the connection was lost
  Unit unit_ = Unit::None;
  bool work_stands_ = false;  // a statement of the unit has succeeded
};

}  // namespace

ConnectionRef OpenOdbc(const Text& connection_text) {
  return New<OdbcConnection>(connection_text);
}

}  // namespace rebate
