#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tests/scheme_kit.h"

namespace rebate {
namespace {

// Runs `work` in a process of its own, which ends with status 0 where it gives true.
template <typename Work>
pid_t Start(Work work) {
  const pid_t child = fork();
  if (child != 0) return child;
  bool done = false;
  try {
    done = work();
  } catch (...) {
  }
  _exit(done ? 0 : 1);
}

int StatusOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

SchemeRequest LargeScheme() {
  SchemeRequest request;
  request.Organisation(0, 8, 7).Organisation(0, 8, 3);
  for (int i = 0; i < 50; ++i) request.GridRow({71});
  return request;
}

// However far a save has come when its process dies, the account holds one scheme, whole.
TEST(Processes, LeaveAWholeSchemeWhenTheyAreKilled) {
  const TestAccount account;
  AddMasterData(account);
  ASSERT_TRUE(LargeScheme().Saves(account));
  for (int round = 0; round < 8; ++round) {
    const pid_t child = Start([&] {
      SchemeRequest request = LargeScheme();
      for (;;) {
        request.replaces = std::stoi(account.Rows("select max(FSchemeID) from t_FL_SchemeList"));
        if (!request.Saves(account)) return false;
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(40 + 7 * round));
    kill(child, SIGKILL);
    EXPECT_EQ(StatusOf(child), -1);
    const Text id = account.Rows("select FSchemeID from t_FL_SchemeList");
    for (const auto& [table, rows] : {std::pair("t_FL_AllOrgs", "100"), std::pair("t_FL_AllItems", "50"),
                                      std::pair("t_FL_RebateRule", "50"), std::pair("t_FL_RebateRange", "1")}) {
      EXPECT_EQ(account.Rows("select FSchemeID,count(*) from " + Text(table) + " group by FSchemeID"), id + "|" + rows);
    }
  }
}

TEST(Processes, WaitForEachOtherWhenTheySave) {
  const TestAccount account;
  AddMasterData(account);
  constexpr int kProcesses = 3;
  constexpr int kSaves = 8;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(Start([&] {
      for (int i = 0; i < kSaves; ++i) {
        SchemeRequest request;
        request.Organisation(0, 8, 1000 * (process + 1) + i).GridRow({71});
        if (!request.Saves(account)) return false;
      }
      return true;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(StatusOf(child), 0);
  EXPECT_EQ(account.Rows("select count(*) from t_FL_SchemeList"), std::to_string(kProcesses * kSaves));
}

// Of two processes that want the same ground at once, one gets it.
TEST(Processes, CannotBothTakeTheSameGround) {
  const TestAccount account;
  AddMasterData(account);
  std::vector<pid_t> children;
  for (int process = 0; process < 4; ++process) {
    children.push_back(Start([&] {
      SchemeRequest request;
      return request.Organisation(0, 8, 7).GridRow({71}).Saves(account);
    }));
  }
  int stored = 0;
  for (const pid_t child : children) stored += StatusOf(child) == 0 ? 1 : 0;
  EXPECT_EQ(stored, 1);
  EXPECT_EQ(account.Rows("select count(*) from t_FL_SchemeList"), "1");
}

}  // namespace
}  // namespace rebate
