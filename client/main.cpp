#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "client/tool.h"
#include "platform/database/connection_text.h"

namespace {

std::size_t TerminalWidth(int file) {
  winsize size{};
  if (isatty(file) == 0 || ioctl(file, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

// The arguments, to work with; what other users see of the process shows no password any more.
std::vector<std::string> TakeArguments(int argc, char** argv) {
  std::vector<std::string> arguments(argv, argv + argc);
  for (int i = 1; i < argc; ++i) {
    const std::string& argument = arguments[static_cast<std::size_t>(i)];
    const std::string shown = rebate::WithoutSecrets(argument);
    if (shown == argument) continue;
    std::memset(argv[i], 0, argument.size());
    std::memcpy(argv[i], shown.data(), std::min(shown.size(), argument.size()));
  }
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  // The ODBC driver manager converts the texts of plain drivers by it. Numbers know no locale.
  std::setlocale(LC_CTYPE, "");
  const bool asks = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
  rebate::Tool tool{std::cin, std::cout, std::cerr, TerminalWidth(STDOUT_FILENO), isatty(STDERR_FILENO) != 0, asks};
  const std::vector<std::string> arguments = TakeArguments(argc, argv);
  std::vector<const char*> texts;
  for (const std::string& argument : arguments) texts.push_back(argument.c_str());
  return rebate::RunTool(argc, texts.data(), tool);
}
