#include "platform/login/data_context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <thread>
#include <vector>

#include "platform/database/connection_pool.h"
#include "platform/database/error_numbers.h"
#include "platform/login/call_observer.h"
#include "tests/error_of.h"
#include "tests/scratch_folder.h"

namespace rebate {
namespace {

using Log = std::vector<Text>;

// Writes down what is asked of it.
class LoggedConnection : public Connection {
 public:
  LoggedConnection(Text name, Log& log) : name_(std::move(name)), log_(log) { Note("connect"); }
  ~LoggedConnection() override { Note("close"); }

  RecordsetRef Execute(std::string_view text) override {
    Note(Text(text));
    if (text == "refused") throw Error(database_error::kStatement, "test", "refused by the server");
    if (text == "lost") throw Error(database_error::kConnection, "test", "the server is gone");
    return nullptr;
  }
  void BeginWork() override {
    Note("begin");
    if (begin_fails) throw Error(database_error::kTimeout, "test", "no beginning");
  }
  void CommitWork() override {
    Note("commit");
    if (commit_fails) throw Error(database_error::kTimeout, "test", "no commit");
  }
  void RollbackWork() noexcept override { Note("rollback"); }

  static inline bool begin_fails = false;
  static inline bool commit_fails = false;

 private:
  void Note(const Text& what) { log_.push_back(name_ + ":" + what); }

  Text name_;
  Log& log_;
};

class DataContextTest : public testing::Test, protected CallObserver {
 protected:
  void TearDown() override {
    SetCallObserver(nullptr);
    LoggedConnection::commit_fails = false;
  }

  Ref<DataContext> Context() { return MakeDataContext(pool_); }
  Log TakeLog() { return std::exchange(log_, {}); }

  void Opening(std::string_view dsn) override { log_.push_back("opening " + Text(dsn)); }
  void VotingAbort() override { log_.push_back("voting abort"); }
  void VotingComplete() override { log_.push_back("voting complete"); }
  void Connecting() override { log_.push_back("connecting"); }
  void Executing(std::string_view text) override {
    log_.push_back("executing " + Text(text));
    if (text == "stopped") throw Error(7, "observer", "not this one");
  }
  void Refused(const Error& error) override { log_.push_back("refused " + error.description); }
  void CallingComponent(std::string_view, std::string_view) override {}

  Log log_;
  std::shared_ptr<ConnectionPool> pool_ =
      std::make_shared<ConnectionPool>([this](const DataSource& source) -> ConnectionRef {
        if (source.path == "gone") throw Error(database_error::kConnection, "test", "no account gone");
        return New<LoggedConnection>(source.path, log_);
      });
};

TEST_F(DataContextTest, ACompleteVoteCommitsWhatStandsBehindTheAbortVote) {
  const auto context = Context();
  context->Open("a");
  context->VoteAbort();
  context->GetConnection()->Execute("one");
  context->VoteComplete();
  context->EndCall();
  EXPECT_EQ(TakeLog(), (Log{"a:connect", "a:begin", "a:rollback", "a:begin", "a:one", "a:commit", "a:rollback"}))
      << "and the call's end leaves no work open";
}

TEST_F(DataContextTest, WithoutACompleteVoteAsTheLastWordNothingStands) {
  const auto context = Context();
  context->Open("a");
  context->GetConnection()->Execute("one");
  context->EndCall();
  EXPECT_EQ(TakeLog(), (Log{"a:connect", "a:begin", "a:one", "a:rollback"}));

  context->Open("a");
  context->VoteComplete();
  context->GetConnection()->Execute("behind the vote");
  context->EndCall();
  context->EndCall();
  EXPECT_EQ(TakeLog(), (Log{"a:begin", "a:commit", "a:begin", "a:behind the vote", "a:rollback"}));

  Context()->Open("a");
  EXPECT_EQ(TakeLog(), (Log{"a:begin", "a:rollback"})) << "a context that is dropped ends its call";
}

TEST_F(DataContextTest, ACommitThatFailsRaises) {
  const auto context = Context();
  context->Open("a");
  context->GetConnection()->Execute("one");
  LoggedConnection::commit_fails = true;
  EXPECT_EQ(ErrorOf([&] { context->VoteComplete(); }).number, database_error::kTimeout);
}

TEST_F(DataContextTest, AConnectionServesAllCallsOfOneTextAndNoneTwiceAtOnce) {
  const auto outer = Context();
  outer->Open("a");
  outer->EndCall();
  outer->Open("a");
  Context()->Open("b");
  TakeLog();
  {
    const auto inner = Context();
    inner->Open("a");
    EXPECT_EQ(TakeLog(), (Log{"a:connect", "a:begin"})) << "the outer call's unit of work is its own";
  }
  EXPECT_EQ(TakeLog(), (Log{"a:rollback", "a:close"}));
  outer->Open("b");
  EXPECT_EQ(TakeLog(), (Log{"a:rollback", "b:begin"})) << "another source ends the work on the first";
}

TEST_F(DataContextTest, ALostConnectionIsReplacedAtTheNextOpen) {
  const auto context = Context();
  context->Open("a");
  EXPECT_EQ(ErrorOf([&] { context->GetConnection()->Execute("lost"); }).number, database_error::kConnection);
  context->EndCall();
  TakeLog();
  context->Open("a");
  EXPECT_EQ(TakeLog(), (Log{"a:close", "a:connect", "a:begin"}));
  LoggedConnection::begin_fails = true;
  EXPECT_EQ(ErrorOf([&] { context->Open("a"); }).number, database_error::kTimeout);
  LoggedConnection::begin_fails = false;
  TakeLog();
  context->Open("a");
  EXPECT_EQ(TakeLog(), (Log{"a:close", "a:connect", "a:begin"})) << "one that can't begin is of no use";
}

TEST_F(DataContextTest, AnAccountFileThatWasReplacedIsOpenedAnew) {
  const ScratchFolder folder;
  const Text path = folder.File("shop.db");
  std::ofstream(files::ToPath(path)) << "old";
  Context()->Open(path);
  TakeLog();
  Context()->Open(path);
  EXPECT_EQ(TakeLog().size(), 2u);
  std::ofstream(files::ToPath(path + ".new")) << "new";
  std::filesystem::rename(files::ToPath(path + ".new"), files::ToPath(path));
  Context()->Open(path);
  EXPECT_EQ(TakeLog()[0], path + ":close");
}

TEST_F(DataContextTest, IdleConnectionsAreClosedWhenTooManyAreOpen) {
  for (int i = 0; i < 40; ++i) Context()->Open(std::to_string(i));
  const Log log = TakeLog();
  EXPECT_EQ(std::count(log.begin(), log.end(), "0:close"), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), "39:close"), 0);
}

TEST_F(DataContextTest, TellsTheObserverBeforeEachAct) {
  SetCallObserver(this);
  const auto context = Context();
  context->Open("Data Source=a;AppUser=3");
  context->VoteAbort();
  const ConnectionRef connection = context->GetConnection();
  connection->Execute("one");
  EXPECT_EQ(ErrorOf([&] { connection->Execute("stopped"); }).number, 7);
  EXPECT_EQ(ErrorOf([&] { connection->Execute("refused"); }).number, database_error::kStatement);
  context->VoteComplete();
  EXPECT_EQ(TakeLog(),
            (Log{"opening Data Source=a;AppUser=3", "a:connect", "a:begin", "voting abort", "a:rollback", "connecting",
                 "executing one", "a:begin", "a:one", "executing stopped", "refused not this one", "executing refused",
                 "a:refused", "refused refused by the server", "voting complete", "a:commit"}));
  EXPECT_NE(ErrorOf([&] { context->Open("Driver=x;PWD={hush"); }).number, 0);
  EXPECT_EQ(TakeLog()[0], "opening Driver=x;PWD=***");

  std::thread([] { EXPECT_EQ(TheCallObserver(), nullptr); }).join();
}

TEST_F(DataContextTest, AContextWithoutAnOpenSourceGivesAUserButNoConnection) {
  const auto context = TheGlobalApplication().GetContext();
  EXPECT_EQ(context->GetUserInfo()->UserID(), 1);
  context->VoteAbort();
  context->VoteComplete();
  EXPECT_EQ(ErrorOf([&] { context->GetConnection(); }).number, error_number::kObjectNotSet);

  const auto other = Context();
  EXPECT_EQ(ErrorOf([&] { other->Open("gone"); }).description, "no account gone");
  EXPECT_EQ(ErrorOf([&] { other->GetConnection(); }).number, error_number::kObjectNotSet);
  other->Open("Data Source=a;AppUser=42");
  EXPECT_EQ(other->GetUserInfo()->UserID(), 42);
}

TEST_F(DataContextTest, AConnectionRunsNothingBehindItsCall) {
  const auto context = Context();
  context->Open("a");
  const ConnectionRef connection = context->GetConnection();
  context->EndCall();
  TakeLog();
  EXPECT_EQ(ErrorOf([&] { connection->Execute("late"); }).number, database_error::kClosed);
  connection->RollbackWork();
  EXPECT_EQ(TakeLog(), Log{});
}

}  // namespace
}  // namespace rebate
