// The fuzzer's entries: the environment's REBATE_FUZZ names the target.

#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "tests/fuzz/targets.h"

namespace {

const rebate::FuzzTarget& Target() {
  const char* name = std::getenv("REBATE_FUZZ");
  for (const rebate::FuzzTarget& target : rebate::FuzzTargets()) {
    if (name != nullptr && target.name == name) return target;
  }
  std::cerr << "REBATE_FUZZ names no target\n";
  std::exit(2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const rebate::FuzzTarget& target = Target();
  target.run({reinterpret_cast<const char*>(data), size});
  return 0;
}
