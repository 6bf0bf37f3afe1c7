#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "calls/json_text.h"
#include "client/tool.h"
#include "tests/test_account.h"

namespace rebate {

struct Outcome {
  int status;
  Text out;
  Text err;
};

// Runs the tool in this process, with `input` as its standard input, which is a terminal if it `asks`.
inline Outcome RunRebate(std::vector<Text> arguments, const Text& input = {}, bool asks = false) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  Tool tool{in, out, err};
  tool.asks = asks;
  arguments.insert(arguments.begin(), "rebate");
  std::vector<const char*> argv;
  for (const Text& argument : arguments) argv.push_back(argument.c_str());
  const int status = RunTool(static_cast<int>(argv.size()), argv.data(), tool);
  return {status, out.str(), err.str()};
}

inline bool Holds(const Text& text, std::string_view part) {
  return text.find(part) != Text::npos;
}

inline Text Example(const Text& name) {
  return REBATE_SOURCE_DIR "/examples/" + name + ".json";
}

// A sample account that `rebate init` made beside the test's own.
class ToolTest : public testing::Test {
 protected:
  ToolTest() : dsn_(account_.File("sample.db")) {
    const Outcome made = RunRebate({"init", dsn_, "--sample"});
    EXPECT_EQ(made.status, 0) << made.err;
  }

  Text Save(const Text& example) {
    const Outcome saved = RunRebate({"save", Example(example), "--dsn", dsn_});
    return std::to_string(saved.status) + " " + saved.out + saved.err;
  }

  // Runs a verb on the account.
  Outcome Run(std::vector<Text> arguments, const Text& input = {}, bool asks = false) {
    arguments.insert(arguments.end(), {"--dsn", dsn_});
    return RunRebate(std::move(arguments), input, asks);
  }
  Json RunJson(std::vector<Text> arguments) {
    arguments.push_back("--json");
    return ParseJson(Run(std::move(arguments)).out);
  }
  void Sql(const Text& text) {
    const Outcome ran = RunRebate({"sql", dsn_, text});
    EXPECT_EQ(ran.status, 0) << ran.err;
  }
  // A file beside the account.
  Text File(const Text& name, const Text& content) {
    const Text path = account_.File(name);
    std::ofstream(files::ToPath(path), std::ios::binary) << content;
    return path;
  }

  TestAccount account_;
  Text dsn_;
};

}  // namespace rebate
