#pragma once

#include <cstddef>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

struct Tool;

// What is wrong with a file of many lines: each problem with its place in front, such as
// `line 3, column 2 (Number): …`.
class FileProblems {
 public:
  void Add(std::size_t line, Text problem);
  bool empty() const { return problems_.empty(); }

  // Prints the first hundred in the order of their lines, the file's name in front of each, and how many more there
  // are.
  void Print(const Text& path, Tool& tool) const;

 private:
  struct Problem {
    std::size_t line;
    Text text;
  };
  std::vector<Problem> problems_;
};

}  // namespace rebate
