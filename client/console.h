#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// The standard streams of the process, made fit for UTF-8 and for lines that end as they are written, while it lives.
// Where one of them is a terminal, it takes and shows every character.
class Console {
 public:
  Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  ~Console();

  // The columns of the terminal behind standard output; 0 where there is none.
  std::size_t width() const;
  std::size_t height() const;       // its lines, likewise
  std::size_t error_width() const;  // likewise of the one behind standard error
  bool errors_are_seen() const;     // standard error is a terminal
  bool can_ask() const;             // standard input and standard output are terminals

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// The process's arguments in UTF-8, the program's name first. What other users see of the process shows no password any
// more, where others see arguments at all.
std::vector<Text> TakeArguments(int argc, char** argv);

}  // namespace rebate
