#include "platform/database/odbc/odbc_account.h"

#include <memory>

#include "platform/database/odbc/link.h"

namespace rebate {
namespace {

class OdbcConnection : public Connection {
 public:
  explicit OdbcConnection(const Text& connection_text)
      : settings_(odbc::Settings::Parse(connection_text)), link_(std::make_unique<odbc::Link>(settings_)) {}
  ~OdbcConnection() override { RollbackWork(); }

  RecordsetRef Execute(std::string_view text) override {
    if (unit_ == Unit::Begun) RequireLink();
    if (!link_) link_ = std::make_unique<odbc::Link>(settings_);
    if (unit_ == Unit::Ready) Begin();
    RecordsetRef rows;
    Watch([&] { rows = link_->Run(text); });
    return rows;
  }

  void BeginWork() override {
    RollbackWork();
    if (link_ && link_->IsDead()) link_ = nullptr;
    if (!link_) link_ = std::make_unique<odbc::Link>(settings_);
    unit_ = Unit::Ready;
  }

  void CommitWork() override {
    if (unit_ == Unit::Begun) {
      RequireLink();
      try {
        Watch([&] { link_->Commit(); });
      } catch (...) {
        RollbackWork();
        throw;
      }
      Leave();
    }
    unit_ = Unit::None;
  }

  void RollbackWork() noexcept override {
    if (unit_ == Unit::Begun && link_) {
      try {
        link_->Rollback();
        Leave();
      } catch (...) {
        link_ = nullptr;
      }
    }
    unit_ = Unit::None;
  }

 private:
  enum class Unit { None, Ready, Begun };

  // What is left of a unit whose connection was lost must not run: its first half is undone.
  void RequireLink() const {
    if (link_) return;
    throw Error(database_error::kConnection, "ODBC",
                "The connection to the server was lost earlier in this unit of work, which is undone.");
  }

  void Begin() {
    unit_ = Unit::Begun;
    try {
      link_->BeginTransaction();
    } catch (...) {
      link_ = nullptr;
      throw;
    }
  }

  // The work is done already: a connection that doesn't come out of its transaction is only given up.
  void Leave() noexcept {
    try {
      link_->LeaveTransactions();
    } catch (...) {
      link_ = nullptr;
    }
  }

  // Runs `act`; lets go of the connection where it shows that the server is gone.
  template <typename Act>
  void Watch(Act act) {
    try {
      act();
    } catch (Error& error) {
      const bool dead = link_->IsDead();
      if (dead && error.number != database_error::kTimeout) error.number = database_error::kConnection;
      if (dead || error.number == database_error::kConnection) link_ = nullptr;
      throw;
    }
  }

  odbc::Settings settings_;
  std::unique_ptr<odbc::Link> link_;  // null where the connection was lost
  Unit unit_ = Unit::None;
};

}  // namespace

ConnectionRef OpenOdbc(const Text& connection_text) {
  return New<OdbcConnection>(connection_text);
}

}  // namespace rebate
