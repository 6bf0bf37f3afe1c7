#include <iostream>
#include <sstream>
#include <vector>

#include "client/console.h"
#include "client/line_editor.h"
#include "client/printable.h"
#include "client/tool.h"

namespace {

// Has a stream write through a filter of control characters while it lives, where it is a terminal.
class Filtered {
 public:
  Filtered(std::ostream& stream, bool is_terminal, std::string_view passed)
      : stream_(stream), former_(stream.rdbuf()), text_(*former_, passed) {
    if (is_terminal) stream_.rdbuf(&text_);
  }
  Filtered(const Filtered&) = delete;
  Filtered& operator=(const Filtered&) = delete;
  ~Filtered() { stream_.rdbuf(former_); }

 private:
  std::ostream& stream_;
  std::streambuf* former_;
  rebate::TerminalText text_;
};

rebate::Text ForTerminal(const rebate::Text& text) {
  std::stringbuf shown;
  rebate::TerminalText filter(shown);
  filter.sputn(text.data(), static_cast<std::streamsize>(text.size()));
  return shown.str();
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const rebate::Console console;
  const Filtered out(std::cout, console.width() > 0, {});
  const Filtered err(std::cerr, console.errors_are_seen(), "\r");  // progress goes back to its line's start
  rebate::Tool tool{
      std::cin,         std::cout, std::cerr, console.width(), 0, console.error_width(), console.errors_are_seen(),
      console.can_ask()};
  tool.height = console.height();
  if (console.can_ask()) {
    if (rebate::HasLineEditor()) tool.read_line = rebate::EditLine;
    tool.page = [](const rebate::Text& text) { return rebate::ShowPages(ForTerminal(text)); };
  }
  const std::vector<rebate::Text> arguments = rebate::TakeArguments(argc, argv);
  std::vector<const char*> texts;
  for (const rebate::Text& argument : arguments) texts.push_back(argument.c_str());
  return rebate::RunTool(static_cast<int>(texts.size()), texts.data(), tool);
}
