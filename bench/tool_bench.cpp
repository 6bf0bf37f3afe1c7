// The tool from its start to the first bytes of its answer, a process each time, on an account with 1,000 schemes.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "bench/stored_schemes.h"

extern char** environ;

namespace rebate::bench {
namespace {

using Clock = std::chrono::steady_clock;

// The tool stands beside this program.
std::filesystem::path Tool() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "rebate";
}

struct Run {
  double first_bytes = 0;  // seconds from the start to them
  double megabytes = 0;    // the most that the process held until then; 0 where it had ended before it could be asked
};

double MostHeld(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (Text line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::atof(line.c_str() + 6) / 1024;
  }
  return 0;
}

Run RunTool(std::vector<Text> words) {
  words.insert(words.begin(), Tool().string());
  std::vector<char*> arguments;
  for (Text& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  int ends[2];
  Require(pipe(ends) == 0, "a pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  const auto start = Clock::now();
  pid_t child = 0;
  Require(posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ) == 0,
          "the tool's start");
  close(ends[1]);
  char buffer[4096];
  Require(read(ends[0], buffer, sizeof buffer) > 0, "the tool's answer");
  Run run;
  run.first_bytes = std::chrono::duration<double>(Clock::now() - start).count();
  run.megabytes = MostHeld(child);
  while (read(ends[0], buffer, sizeof buffer) > 0) {
  }
  close(ends[0]);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  Require(waitpid(child, &status, 0) == child && status == 0, "the tool");
  return run;
}

void ToolStart(benchmark::State& state, const std::vector<Text>& words) {
  std::vector<Text> all = words;
  all.insert(all.end(), {"--dsn", StoredSchemes(1000, 3).dsn()});
  double megabytes = 0;
  for (auto _ : state) {
    const Run run = RunTool(all);
    state.SetIterationTime(run.first_bytes);
    megabytes = std::max(megabytes, run.megabytes);
  }
  state.counters["megabytes"] = megabytes;
}

void ToolSql(benchmark::State& state) {
  ToolStart(state, {"sql", "select FSchemeName from t_FL_SchemeList where FSchemeID=7"});
}
void ToolList(benchmark::State& state) {
  ToolStart(state, {"list", "--id", "7"});
}

BENCHMARK(ToolSql)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(ToolList)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
