#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>

#include "client/tool.h"

namespace {

std::size_t TerminalWidth(int file) {
  winsize size{};
  if (isatty(file) == 0 || ioctl(file, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const bool asks = isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
  rebate::Tool tool{std::cin, std::cout, std::cerr, TerminalWidth(STDOUT_FILENO), isatty(STDERR_FILENO) != 0, asks};
  return rebate::RunTool(argc, argv, tool);
}
