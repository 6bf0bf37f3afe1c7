#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/upgrade_kit.h"

namespace rebate {
namespace {

using EmbeddedUpgradeProcess = EmbeddedUpgrade;

TEST_F(EmbeddedUpgradeProcess, SurvivesAKillAtAnyMoment) {
  Text rows;
  for (int i = 0; i < 20000; ++i) rows += "INSERT INTO t_k VALUES(" + std::to_string(i + 1000) + ".5,'k');";
  const Text old = Old("old.db", Text(kTables) + rows);
  int undone = 0;
  for (int milliseconds = 1; milliseconds < 200; milliseconds += 20) {
    const Text path = folder_.File("killed.db");
    std::filesystem::copy_file(old, path);
    const pid_t child = fork();
    if (child == 0) {
      OpenRefusal(path);
      _exit(0);
    }
    usleep(static_cast<useconds_t>(milliseconds) * 1000);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    undone += files::IsTaken(path + "-wal") ? 1 : 0;
    const ConnectionRef account = OpenEmbedded(path);
    ExpectUpgraded(*account);
    EXPECT_EQ(RowsOn(*account, "select count(*), sum(FA - 0.5) from t_k"), "20003,219990101.5");
    for (const char* suffix : {"", "-wal", "-shm"}) files::Remove(path + suffix);
  }
  EXPECT_GT(undone, 0) << "no kill came in time";
}

}  // namespace
}  // namespace rebate
