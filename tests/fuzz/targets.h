#pragma once

#include <span>
#include <string_view>

namespace rebate {

// What takes any bytes at all: it must answer or refuse them, and nothing else. A run ends the process where it finds
// more wrong than that.
struct FuzzTarget {
  std::string_view name;
  void (*run)(std::string_view input);
};

// Statement texts, lines of served calls, connection texts, request files and account files.
std::span<const FuzzTarget> FuzzTargets();

}  // namespace rebate
