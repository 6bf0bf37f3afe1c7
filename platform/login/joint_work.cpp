#include "platform/login/joint_work.h"

#include <algorithm>
#include <array>

#include "platform/automation/error.h"
#include "platform/database/connection_pool.h"
#include "platform/database/error_numbers.h"
#include "platform/login/data_context.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

// Whether a text can't but read. One that is taken for a writing one though it reads is treated with more care than it
// needs.
bool OnlyReads(std::string_view text) {
  constexpr std::array kWriting = {"into", "insert", "update", "delete", "create", "drop", "alter", "truncate", "exec"};
  if (!EqualsIgnoreCase(TrimWhite(text).substr(0, 6), "select")) return false;
  return std::none_of(kWriting.begin(), kWriting.end(),
                      [&](const char* word) { return ContainsIgnoreCase(text, word); });
}

}  // namespace

// The data source's connection as calls see it, each of which begins a unit of work of its own and ends it.
class JointConnection : public Connection {
 public:
  explicit JointConnection(ConnectionRef connection) : connection_(std::move(connection)) { connection_->BeginWork(); }

  const ConnectionRef& connection() const { return connection_; }
  bool IsUndone() const { return undone_; }

  RecordsetRef Execute(std::string_view text) override {
    Check(!OnlyReads(text));
    return connection_->Execute(text);
  }
  RecordsetRef ExecuteForFirst(std::string_view text) override {
    Check(!OnlyReads(text));
    return connection_->ExecuteForFirst(text);
  }
  void ExecuteEach(std::span<const Text> texts, std::size_t& done) override {
    done = 0;
    Check(!std::all_of(texts.begin(), texts.end(), OnlyReads));
    connection_->ExecuteEach(texts, done);
  }
  std::vector<Text> TakeMessages() override { return connection_->TakeMessages(); }

  void BeginWork() override { RollbackWork(); }
  // Of a call that only read, where all is undone.
  void CommitWork() override { call_wrote_ = false; }
  void RollbackWork() noexcept override {
    if (std::exchange(call_wrote_, false)) Undo();
  }

  void Commit() {
    if (undone_ || call_wrote_) ThrowUndone();
    undone_ = true;
    connection_->CommitWork();
  }
  void Undo() noexcept {
    if (std::exchange(undone_, true)) return;
    connection_->RollbackWork();
  }

 private:
  void Check(bool writes) {
    if (undone_ && writes) ThrowUndone();
    call_wrote_ = call_wrote_ || writes;
  }
  [[noreturn]] static void ThrowUndone() {
    throw Error(database_error::kStatement, "Connection",
                "The unit of work of these calls was undone by one of them, and takes no more.");
  }

  ConnectionRef connection_;
  bool call_wrote_ = false;  // what the call that is being made would lose
  bool undone_ = false;      // or committed
};

JointWork::JointWork(const Text& dsn) : pool_(ConnectionsOfThisThread()) {
  joint_ = New<JointConnection>(Connect(DataSource::Parse(dsn)));
  pool_.Pin(dsn, joint_);
}

JointWork::~JointWork() {
  pool_.Unpin();
  joint_->Undo();
}

const ConnectionRef& JointWork::connection() const {
  return joint_->connection();
}

bool JointWork::IsUndone() const {
  return joint_->IsUndone();
}

void JointWork::Commit() {
  pool_.Unpin();
  joint_->Commit();
}

}  // namespace rebate
