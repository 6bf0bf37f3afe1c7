#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "platform/database/connect.h"
#include "platform/login/login_components.h"
#include "platform/login_standins/login_standins.h"
#include "tests/abi_kit.h"
#include "tests/hostile.h"

namespace rebate {
namespace {

constexpr const char* kTypes = R"({"op":"BaseInfoMgr.LoadRebateTypeData","args":{"lRebateClass":24}})";
constexpr const char* kMode = R"({"op":"BaseInfoMgr.TransMode"})";
constexpr const char* kRaising = R"({"op":"BaseInfoMgr.UpdateBatch","args":{"SQLBatch":["select x from t_Item"]}})";

Text Batch(const Text& statement) {
  return R"({"op":"BaseInfoMgr.UpdateBatch","args":{"SQLBatch":[")" + statement + "\"]}}";
}

class Abi : public ToolTest {
 protected:
  // Holds the account's lock for writing as long as it lives.
  class Writer {
   public:
    explicit Writer(const Text& dsn) : connection_(Connect(DataSource::Parse(dsn))) {
      connection_->BeginWork();
      connection_->Execute("update t_User set FName=FName");
    }
    ~Writer() { connection_->RollbackWork(); }

   private:
    ConnectionRef connection_;
  };

  // Starts a call that waits for a writer, and gives its thread when the session is busy with it.
  static std::thread Waiting(const AbiSession& session, Text& answer) {
    std::thread caller([&] {
      do {
        answer = session.Call(Batch("update t_User set FName=FName"));
      } while (ErrorNumber(answer) == 70);  // the question below came between
    });
    while (ErrorNumber(session.Call(kMode)) != 70) std::this_thread::yield();
    return caller;
  }
};

TEST_F(Abi, AnswersAsTheToolDoes) {
  const Text requests[] = {
      kTypes, kRaising, "[", R"({"op":"BaseInfoMgr.GetItemInfo","args":{"lType":2040,"lStatus":0,"UserID":1}})",
      R"({"op":"BaseInfoMgr.CheckEnableScheme","args":{"lSchemeID":3,"Enabled":true,"msg":"促销"},"thread":"b"})"};
  const AbiSession session(dsn_, REBATE_TRACE);
  for (const Text& request : requests) {
    EXPECT_EQ(session.Call(request) + "\n", Run({"call", "--trace"}, request + "\n").out);
  }
}

TEST_F(Abi, WrongUseIsAnsweredByAnError) {
  rebate_session opened = 7;
  const auto open = [&](const Text& dsn, std::uint32_t flags) {
    return Take(rebate_open(dsn.c_str(), flags, &opened));
  };
  EXPECT_EQ(ErrorNumber(Take(rebate_open(dsn_.c_str(), 0, nullptr))), 5);
  EXPECT_EQ(ErrorNumber(open(dsn_, 2)), 5);
  EXPECT_EQ(ErrorNumber(open("", 0)), 5);
  EXPECT_EQ(ErrorNumber(open("caf\xE9.db", 0)), 5);
  EXPECT_TRUE(Holds(open(dsn_ + "x", 0), "does not exist"));
  EXPECT_EQ(opened, 0u);
  EXPECT_EQ(ErrorNumber(Take(rebate_call(0, kMode))), 91);
  rebate_close(0);
  rebate_free(nullptr);

  ASSERT_EQ(Take(rebate_open(nullptr, 0, &opened)), "NULL");
  EXPECT_EQ(ErrorNumber(Take(rebate_call(opened, nullptr))), 5);
  EXPECT_EQ(ErrorNumber(Take(rebate_call(opened, kTypes))), 449) << "without an account";
  EXPECT_EQ(ErrorNumber(Take(rebate_call(opened, "{\"op\":\"\xFF\"}"))), 5);
  EXPECT_EQ(ErrorNumber(Take(rebate_call(opened, Text(1 << 20, '[').c_str()))), 5);
  char* kept = rebate_call(opened, kMode);
  rebate_close(opened);
  rebate_close(opened);
  EXPECT_EQ(ErrorNumber(Take(rebate_call(opened, kMode))), 91);
  EXPECT_EQ(Take(kept), R"({"op":"BaseInfoMgr.TransMode","result":2})");
}

TEST_F(Abi, ARequestMayBeLarge) {
  const AbiSession session(dsn_);
  const Text name(16 << 20, 'n');
  const Text answer = session.Call(R"({"op":"BaseInfoMgr.)" + name + "\"}");
  EXPECT_EQ(ErrorNumber(answer), 438);
  EXPECT_GT(answer.size(), 2 * name.size()) << "it stands under \"op\" and in the error";
}

TEST_F(Abi, ASessionMovesBetweenThreads) {
  const AbiSession session(dsn_);
  Text answer;
  std::thread([&] { answer = session.Call(Batch("create table #kept (a int)")); }).join();
  EXPECT_EQ(ErrorNumber(answer), 0) << answer;
  std::thread([&] { answer = session.Call(Batch("insert into #kept values (1)")); }).join();
  EXPECT_EQ(ErrorNumber(answer), 0) << "its connection's temporary table: " << answer;
}

TEST_F(Abi, SessionsWorkBesideEachOther) {
  const auto work = [this](Text* wrong) {
    const AbiSession session(dsn_);
    const Text expected = session.Call(kTypes);
    for (int i = 0; i < 200; ++i) {
      if (const Text answer = session.Call(kTypes); answer != expected) *wrong = answer;
    }
  };
  Text wrong[2];
  std::thread first(work, &wrong[0]);
  std::thread second(work, &wrong[1]);
  first.join();
  second.join();
  EXPECT_EQ(wrong[0] + wrong[1], "");
}

TEST_F(Abi, ACallIntoABusySessionIsAnsweredAndCloseWaitsForTheOther) {
  auto session = std::make_unique<AbiSession>(dsn_);
  auto writer = std::make_unique<Writer>(dsn_);
  Text answer;
  std::thread caller = Waiting(*session, answer);
  const rebate_session number = session->number();
  std::thread closer([number] { rebate_close(number); });
  while (ErrorNumber(session->Call(kMode)) != 91) std::this_thread::yield();
  writer.reset();
  closer.join();
  caller.join();
  EXPECT_EQ(ErrorNumber(answer), 0) << answer;
}

// Calls from a destructor, which the host runs while its own exception is under way.
TEST_F(Abi, CallsWorkWhileTheHostUnwinds) {
  const AbiSession session(dsn_);
  struct Caller {
    ~Caller() {
      under_way = std::uncaught_exceptions();
      answers = session.Call(kRaising) + session.Call("[") + session.Call(kMode);
    }
    const AbiSession& session;
    int& under_way;
    Text& answers;
  };
  int under_way = 0;
  Text answers;
  try {
    const Caller caller{session, under_way, answers};
    throw std::runtime_error("of the host");
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "of the host");
  }
  EXPECT_EQ(under_way, 1);
  EXPECT_EQ(answers, session.Call(kRaising) + session.Call("[") + session.Call(kMode));
}

TEST_F(Abi, AThreadIsCancelledBetweenCallsAlone) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the address sanitizer takes the stack of a cancelled thread for used";
#endif
  const AbiSession session(dsn_);
  const auto call_for_ever = [](void* called) -> void* {
    for (;;) {
      static_cast<const AbiSession*>(called)->Call(kTypes);
      pthread_testcancel();
    }
  };
  pthread_t caller;
  ASSERT_EQ(pthread_create(&caller, nullptr, call_for_ever, const_cast<AbiSession*>(&session)), 0);
  while (ErrorNumber(session.Call(kMode)) != 70) std::this_thread::yield();
  pthread_cancel(caller);
  void* outcome = nullptr;
  pthread_join(caller, &outcome);
  EXPECT_EQ(outcome, PTHREAD_CANCELED);
  EXPECT_EQ(ErrorNumber(session.Call(kTypes)), 0);
}

TEST_F(Abi, AForkedChildOpensItsOwnSession) {
  const AbiSession session(dsn_);
  const pid_t child = fork();
  if (child == 0) {
    const bool refused = ErrorNumber(session.Call(kMode)) == 5;
    rebate_close(session.number());
    _exit(refused && ErrorNumber(AbiSession(dsn_).Call(kTypes)) == 0 ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ErrorNumber(session.Call(kTypes)), 0);
}

// The library's copy of the code is none of the test's own, into which the same sources are linked.
TEST_F(Abi, HostLinesHoldForAllSessionsOfTheLibraryUntilTheLastEnds) {
  const Text listing = R"({"op":"BaseInfoMgr.GetItemInfo","args":{"lType":2040,"lStatus":0,"UserID":1002}})";
  const auto rows = [&](const AbiSession& session) { return ParseJson(session.Call(listing))["result"].size(); };
  {
    const AbiSession second(dsn_);
    {
      const AbiSession first(dsn_);
      EXPECT_EQ(first.Call(R"({"login":{"NeedAuthrize":true,"AuthrizeItemClassList":"8"}})"), R"({"login":true})");
      EXPECT_EQ(rows(first), 4u);
    }
    EXPECT_EQ(rows(second), 4u);
    EXPECT_FALSE(TheLoginAnswers().need_authrize);
  }
  EXPECT_EQ(rows(AbiSession(dsn_)), 7u);
}

TEST_F(Abi, ManySessionsLeaveNothingBehind) {
  const auto entries = [](const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
  };
  const auto files = entries("/proc/self/fd");
  const auto threads = entries("/proc/self/task");
  for (int i = 0; i < 10000; ++i) {
    rebate_session session = 0;
    const bool on_account = i % 20 == 0;  // the other ones have a thread alone
    ASSERT_EQ(Take(rebate_open(on_account ? dsn_.c_str() : nullptr, 0, &session)), "NULL");
    ASSERT_EQ(ErrorNumber(Take(rebate_call(session, on_account ? kTypes : kMode))), 0);
    rebate_close(session);
  }
  EXPECT_EQ(entries("/proc/self/fd"), files);
  EXPECT_EQ(entries("/proc/self/task"), threads);
}

// Whoever calls may hand on what strangers wrote.
TEST_F(Abi, TakesNoStatementForAnId) {
  Sql("create table t_Canary (FA int)");
  const AbiSession session(dsn_);
  std::ifstream lines(REBATE_SOURCE_DIR "/tests/faults/operations.jsonl");
  std::size_t refused = 0;
  for (Text line; std::getline(lines, line);) {
    const Json operation = ParseJson(line);
    if (operation["op"] == "BaseInfoMgr.UpdateBatch" || operation["args"].empty()) continue;
    const auto refuses = [&](const Json& args) {
      return ErrorNumber(session.Call(JsonLine({{"op", operation["op"]}, {"args", args}}))) == 5;
    };
    EXPECT_FALSE(refuses(operation["args"])) << line;
    ForEachHostile(operation["args"], [&](const Json& args) { refused += refuses(args) ? 1 : 0; });
  }
  EXPECT_GT(refused, 100u);
  EXPECT_EQ(RunRebate({"sql", dsn_, "select count(*) from t_Canary"}).status, 0);
}

}  // namespace
}  // namespace rebate
