#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstring>

#include "client/console.h"
#include "platform/database/connection_text.h"

namespace rebate {

namespace {

// All 0 where the file is no terminal.
winsize SizeOf(int file) {
  winsize size{};
  if (isatty(file) == 0) return {};
  // A terminal that doesn't tell its size, such as a serial line, mostly has this one.
  if (ioctl(file, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
    size.ws_row = 24;
    size.ws_col = 80;
  }
  return size;
}

}  // namespace

struct Console::State {};

Console::Console() {
  // The ODBC driver manager converts the texts of plain drivers by it. Numbers know no locale.
  std::setlocale(LC_CTYPE, "");
}

Console::~Console() = default;

std::size_t Console::width() const {
  return SizeOf(STDOUT_FILENO).ws_col;
}

std::size_t Console::height() const {
  return SizeOf(STDOUT_FILENO).ws_row;
}

std::size_t Console::error_width() const {
  return SizeOf(STDERR_FILENO).ws_col;
}

bool Console::errors_are_seen() const {
  return isatty(STDERR_FILENO) != 0;
}

bool Console::can_ask() const {
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

std::vector<Text> TakeArguments(int argc, char** argv) {
  std::vector<Text> arguments(argv, argv + argc);
  for (int i = 1; i < argc; ++i) {
    const Text& argument = arguments[static_cast<std::size_t>(i)];
    const Text shown = WithoutSecrets(argument);
    if (shown == argument) continue;
    std::memset(argv[i], 0, argument.size());
    std::memcpy(argv[i], shown.data(), std::min(shown.size(), argument.size()));
  }
  return arguments;
}

}  // namespace rebate
