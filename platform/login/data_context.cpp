#include "platform/login/data_context.h"

#include <exception>

#include "platform/automation/error.h"
#include "platform/automation/per_thread.h"
#include "platform/database/connection_pool.h"
#include "platform/database/connection_text.h"
#include "platform/database/error_numbers.h"
#include "platform/login/call_observer.h"
#include "platform/login/source_login.h"

namespace rebate {
namespace {

// The connection as one call sees it: announces every statement to the thread's observer, and sees to it that each one
// runs inside a unit of work. Behind the call's end it runs nothing more.
class CallConnection : public Connection {
 public:
  explicit CallConnection(Ref<PooledConnection> pooled) : pooled_(std::move(pooled)) {
    pooled_->busy = true;
    try {
      BeginWork();
    } catch (...) {
      pooled_->broken = true;
      End();
      throw;
    }
  }

  RecordsetRef Execute(std::string_view text) override { return Announce(text, &Connection::Execute); }
  RecordsetRef ExecuteForFirst(std::string_view text) override { return Announce(text, &Connection::ExecuteForFirst); }

  // The observer hears of the texts when it is known which ones ran: of none behind one that was refused.
  void ExecuteEach(std::span<const Text> texts, std::size_t& done) override {
    CallObserver* observer = TheCallObserver();
    if (observer == nullptr) [[likely]]
      return SendEach(texts, done);
    std::exception_ptr refusal;
    try {
      SendEach(texts, done);
    } catch (...) {
      refusal = std::current_exception();
    }
    try {
      for (const Text& text : texts.first(done)) observer->Executing(text);
      if (!refusal) return;
      if (done < texts.size()) observer->Executing(texts[done]);
      std::rethrow_exception(refusal);
    } catch (const Error& error) {
      observer->Refused(error);
      throw;
    }
  }

  std::vector<Text> TakeMessages() override { return Live().TakeMessages(); }

  void BeginWork() override {
    Guard([&] { Live().BeginWork(); });
    in_unit_ = true;
  }
  void CommitWork() override {
    in_unit_ = false;
    Guard([&] { Live().CommitWork(); });
  }
  void RollbackWork() noexcept override {
    if (!pooled_) return;
    in_unit_ = false;
    pooled_->connection->RollbackWork();
  }

  void End() noexcept {
    if (!pooled_) return;
    RollbackWork();
    pooled_->busy = false;
    pooled_ = nullptr;
  }

 private:
  using Way = RecordsetRef (Connection::*)(std::string_view text);

  RecordsetRef Announce(std::string_view text, Way way) {
    CallObserver* observer = TheCallObserver();
    if (observer == nullptr) [[likely]]
      return Send(text, way);
    try {
      observer->Executing(text);
      return Send(text, way);
    } catch (const Error& error) {
      observer->Refused(error);
      throw;
    }
  }

  RecordsetRef Send(std::string_view text, Way way) {
    if (!in_unit_) BeginWork();
    RecordsetRef rows;
    Guard([&] { rows = (Live().*way)(text); });
    return rows;
  }

  void SendEach(std::span<const Text> texts, std::size_t& done) {
    if (!in_unit_) BeginWork();
    Guard([&] { Live().ExecuteEach(texts, done); });
  }

  Connection& Live() const {
    if (!pooled_) {
      throw Error(database_error::kClosed, "Connection",
                  "Operation is not allowed when the object is closed: the call that the connection belongs to has "
                  "ended.");
    }
    return *pooled_->connection;
  }

  // Runs `act` and takes note where it shows that the connection is lost.
  template <typename Act>
  void Guard(Act act) {
    try {
      act();
    } catch (const Error& error) {
      if (pooled_ && error.number == database_error::kConnection) pooled_->broken = true;
      throw;
    } catch (...) {
      if (pooled_) pooled_->broken = true;
      throw;
    }
  }

  Ref<PooledConnection> pooled_;  // null when the call has ended
  bool in_unit_ = false;          // a unit of work is ready or begun
};

class LoggedInUser : public UserInfo {
 public:
  explicit LoggedInUser(Long id) : id_(static_cast<std::int16_t>(id)) {}
  std::int16_t UserID() const override { return id_; }

 private:
  std::int16_t id_;
};

class PoolingContext : public DataContext {
 public:
  explicit PoolingContext(std::shared_ptr<ConnectionPool> pool) : pool_(std::move(pool)) {}
  ~PoolingContext() override { EndCall(); }

  void VoteAbort() override {
    if (CallObserver* observer = TheCallObserver()) observer->VotingAbort();
    if (connection_) connection_->RollbackWork();
  }

  void VoteComplete() override {
    if (CallObserver* observer = TheCallObserver()) observer->VotingComplete();
    if (connection_) connection_->CommitWork();
  }

  Ref<UserInfo> GetUserInfo() override { return New<LoggedInUser>(app_user_); }

  void Open(const Text& dsn) override {
    if (CallObserver* observer = TheCallObserver()) observer->Opening(WithoutSecrets(dsn));
    EndCall();
    const DataSource source = DataSource::Parse(dsn);
    AnnounceSourceLogin(source);
    connection_ = New<CallConnection>(pool_->Take(dsn, source));
    app_user_ = source.app_user;
  }

  ConnectionRef GetConnection() override {
    if (CallObserver* observer = TheCallObserver()) observer->Connecting();
    if (!connection_) {
      throw Error(error_number::kObjectNotSet, "DataContext",
                  "No data source is open: open one before its connection is asked for.");
    }
    return connection_;
  }

  void EndCall() noexcept override {
    if (connection_) connection_->End();
    connection_ = nullptr;
  }

 private:
  std::shared_ptr<ConnectionPool> pool_;
  Ref<CallConnection> connection_;  // null outside a call
  Long app_user_ = DataSource().app_user;
};

class ThreadApplication : public GlobalApplication {
 public:
  Ref<DataContext> GetContext() override { return MakeDataContext(pool_); }
  ConnectionPool& connections() { return *pool_; }

 private:
  std::shared_ptr<ConnectionPool> pool_ = std::make_shared<ConnectionPool>();
};

}  // namespace

Ref<DataContext> MakeDataContext(std::shared_ptr<ConnectionPool> pool) {
  return New<PoolingContext>(std::move(pool));
}

GlobalApplication& TheGlobalApplication() {
  return OfThisThread<ThreadApplication>();
}

ConnectionPool& ConnectionsOfThisThread() {
  return OfThisThread<ThreadApplication>().connections();
}

}  // namespace rebate
