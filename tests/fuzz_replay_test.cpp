// What the fuzzer found, and what it starts from: each input once.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/fuzz/targets.h"

namespace rebate {
namespace {

TEST(FuzzCorpus, EveryInputIsAnsweredOrRefused) {
  for (const FuzzTarget& target : FuzzTargets()) {
    const std::filesystem::path folder = std::filesystem::path(REBATE_SOURCE_DIR "/tests/fuzz/corpus") / target.name;
    std::size_t inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      SCOPED_TRACE(entry.path().string());
      std::ifstream file(entry.path(), std::ios::binary);
      target.run(std::string(std::istreambuf_iterator<char>(file), {}));
      ++inputs;
    }
    EXPECT_GT(inputs, 0u) << target.name;
  }
}

}  // namespace
}  // namespace rebate
