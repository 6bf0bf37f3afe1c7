#pragma once

#include <streambuf>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// `text` with a blank in the place of each control character (those of ASCII and U+0080 to U+009F).
Text Printable(std::string_view text);

// Writes to a terminal's buffer what may be shown there: line ends, tabs and all that is no control character. The
// others, which could move the cursor or change the terminal, are written as `\u001b`.
class TerminalText : public std::streambuf {
 public:
  // `terminal` outlives it. `passed` are further control characters that pass.
  explicit TerminalText(std::streambuf& terminal, std::string_view passed = {})
      : terminal_(terminal), passed_(passed) {}

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override { return terminal_.pubsync(); }

 private:
  bool Put(char c);
  bool PutEscaped(unsigned char code);

  std::streambuf& terminal_;
  Text passed_;
  bool lead_waits_ = false;  // 0xC2, which may begin one of U+0080 to U+009F
};

}  // namespace rebate
