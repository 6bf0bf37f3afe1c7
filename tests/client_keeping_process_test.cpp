#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "platform/values/ascii.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// An account that takes a while to copy.
class ClientKeeping : public ToolTest {
 protected:
  ClientKeeping() {
    EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
    Text text = "insert into t_FL_CheckItems values (1, 1, 4, 401)\n";
    for (int i = 0; i < 15; ++i) text += "insert into t_FL_CheckItems select * from t_FL_CheckItems\n";
    Sql(text);
  }

  static pid_t Start(const std::vector<Text>& arguments) {
    const pid_t child = fork();
    if (child != 0) return child;
    freopen("/dev/null", "w", stdout);
    freopen("/dev/null", "w", stderr);
    std::vector<char*> words{const_cast<char*>("rebate")};
    for (const Text& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    execv(REBATE_TOOL, words.data());
    _exit(127);
  }
  static int StatusOf(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  static Text Counts(const Text& dsn) {
    return RunRebate({"sql", dsn,
                      "select (select count(*) from t_FL_SchemeList), (select count(*) from t_Item), "
                      "(select count(*) from t_FL_CheckItems)"})
        .out;
  }
  bool IsHalfDone() const {
    for (const auto& entry : std::filesystem::directory_iterator(files::ToPath(dsn_).parent_path())) {
      if (Holds(files::FromPath(entry.path()), ".making-")) return true;
    }
    return false;
  }

  // Kills the verb ever later, until it runs through or `undone` says of what a kill left that the work is done.
  template <typename Undone>
  void KillUntilDone(const std::vector<Text>& arguments, const Undone& undone) {
    const Text before = Counts(dsn_);
    int killed = 0;
    for (useconds_t wait = 2000;; wait = wait * 4 / 3) {
      const pid_t child = Start(arguments);
      usleep(wait);
      kill(child, SIGKILL);
      const int status = StatusOf(child);
      EXPECT_EQ(Counts(dsn_), before);
      if (status == 0) break;
      ASSERT_EQ(status, -1);
      ++killed;
      if (!undone()) break;
    }
    EXPECT_GT(killed, 3);
    EXPECT_EQ(RunRebate({"verify", "--dsn", dsn_}).status, 0);
  }
};

TEST_F(ClientKeeping, ABackupIsThereWholeOrNotAtAll) {
  const Text copy = account_.File("copy.db");
  bool half_done = false;
  KillUntilDone({"backup", copy, "--dsn", dsn_}, [&] {
    half_done = half_done || IsHalfDone();
    if (files::IsTaken(copy)) {
      EXPECT_EQ(Counts(copy), Counts(dsn_));
      files::Remove(copy);
    }
    return true;
  });
  EXPECT_TRUE(half_done) << "no kill came in time";
  EXPECT_EQ(Counts(copy), Counts(dsn_));
  struct stat status {};
  ASSERT_EQ(stat(copy.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(ClientKeeping, ACopyIsThereWholeOrNotAtAll) {
  const Text made = account_.File("made.db");
  bool half_done = false;
  KillUntilDone({"copy", dsn_, made}, [&] {
    half_done = half_done || IsHalfDone();
    if (files::IsTaken(made)) {
      EXPECT_EQ(Counts(made), Counts(dsn_));
      files::Remove(made);
    }
    return true;
  });
  EXPECT_TRUE(half_done) << "no kill came in time";
  const Text there = account_.File("there.db");
  ASSERT_EQ(RunRebate({"init", there}).status, 0);
  const Text empty = Counts(there);
  // A kill may come when the work stands and the process hasn't ended.
  KillUntilDone({"copy", dsn_, there}, [&] { return Counts(there) == empty; });
  EXPECT_EQ(Counts(there), Counts(dsn_));
}

// One process writes two tables at once, another one backs up: each copy is the account at one moment.
TEST_F(ClientKeeping, ABackupIsOfOneMomentWhileOthersWrite) {
  const Text writing =
      "insert into t_FL_SchemeLink (FBillNo) values ('a')\ninsert into t_User values ((select count(*) from t_User) + "
      "5000, 'a')\nGO 400\n";
  Sql("insert into t_FL_SchemeLink (FBillNo) select 'a' from t_User");
  const Text script = File("write.sql", writing);
  const pid_t one = Start({"sql", dsn_, "-f", script});
  const Text copy = account_.File("copy.db");
  int copies = 0;
  std::set<Text> moments;
  while (waitpid(one, nullptr, WNOHANG) == 0) {
    const Outcome made = Run({"backup", copy, "--force"});
    ASSERT_EQ(made.status, 0) << made.err;
    ++copies;
    const Text links = RunRebate({"sql", copy, "--csv", "select count(*) as n from t_FL_SchemeLink"}).out;
    EXPECT_EQ(RunRebate({"sql", copy, "--csv", "select count(*) as n from t_User"}).out, links);
    moments.insert(links);
  }
  EXPECT_GT(copies, 1);
  EXPECT_GT(moments.size(), 1u);
}

}  // namespace
}  // namespace rebate
