#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>

#include "platform/values/types.h"

namespace rebate {

// What a shell command prints, with its status behind it where that isn't 0.
inline Text Shell(const Text& command) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  Text printed;
  std::array<char, 4096> part;
  for (std::size_t size; (size = fread(part.data(), 1, part.size(), pipe)) > 0;) printed.append(part.data(), size);
  const int status = pclose(pipe);
  return status == 0 ? printed : printed + "status " + std::to_string(status);
}

inline bool Runs(const Text& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace rebate
