#include "client/line_editor.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#ifdef REBATE_HAS_LIBEDIT
#include <editline/readline.h>
#endif

#include "platform/files/files.h"

namespace rebate {
namespace {

// While it lives, a pager that ends before the text doesn't end this process.
class PipesMayBreak {
 public:
  PipesMayBreak() : former_(std::signal(SIGPIPE, SIG_IGN)) {}
  ~PipesMayBreak() { std::signal(SIGPIPE, former_); }
  PipesMayBreak(const PipesMayBreak&) = delete;
  PipesMayBreak& operator=(const PipesMayBreak&) = delete;

 private:
  void (*former_)(int);
};

#ifdef REBATE_HAS_LIBEDIT
constexpr int kMostRemembered = 1000;

// The lines typed, from before this run on; kept as each is added, since a signal may end the process.
class History {
 public:
  History() {
    using_history();
    stifle_history(kMostRemembered);
    if (const auto home = files::EnvironmentVariable("HOME"); home && !home->empty())
      path_ = *home + "/.rebate_history";
    if (!path_.empty()) read_history(path_.c_str());
  }
  History(const History&) = delete;
  History& operator=(const History&) = delete;
  void Add(const char* line) {
    if (*line == '\0') return;
    add_history(line);
    if (path_.empty()) return;
    const mode_t former = umask(S_IRWXG | S_IRWXO);
    write_history(path_.c_str());
    umask(former);
  }

 private:
  Text path_;
};
#endif

}  // namespace

#ifdef REBATE_HAS_LIBEDIT
bool HasLineEditor() {
  return true;
}

std::optional<Text> EditLine(const Text& prompt) {
  static History history;
  char* const line = readline(prompt.c_str());
  if (line == nullptr) return std::nullopt;
  history.Add(line);
  const Text taken = line;
  std::free(line);
  return taken;
}
#else
bool HasLineEditor() {
  return false;
}

std::optional<Text> EditLine(const Text&) {
  return std::nullopt;
}
#endif

bool ShowPages(const Text& text) {
  const std::optional<Text> wanted = files::EnvironmentVariable("PAGER");
  const PipesMayBreak pipes_may_break;
  FILE* const pager = popen(wanted && !wanted->empty() ? wanted->c_str() : "less", "w");
  if (pager == nullptr) return false;
  std::fwrite(text.data(), 1, text.size(), pager);
  constexpr int kNoSuchProgram = 127;  // as the shell tells it
  const int status = pclose(pager);
  return !(WIFEXITED(status) && WEXITSTATUS(status) == kNoSuchProgram);
}

}  // namespace rebate
