// Texts from strangers in the place of ids, amounts and names: none of them becomes a statement.

#include "tests/hostile.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

class HostileFiles : public ToolTest {
 protected:
  HostileFiles() { Sql("create table t_Canary (FA int)"); }

  bool CanaryLives() { return RunRebate({"sql", dsn_, "select count(*) from t_Canary"}).status == 0; }

  // Runs the verb with every hostile form of the example in the place of FILE.
  void Feed(const std::vector<Text>& verb, const Text& example) {
    std::ifstream file(Example(example));
    std::size_t refused = 0;
    ForEachHostile(ParseJson(Text(std::istreambuf_iterator<char>(file), {})), [&](const Json& document) {
      std::vector<Text> arguments = verb;
      arguments.push_back(File("hostile.json", JsonLine(document)));
      refused += Run(arguments, "", false).status == 0 ? 0 : 1;
    });
    EXPECT_TRUE(CanaryLives()) << verb.front();
    EXPECT_GT(refused, 0u) << verb.front();
  }
};

TEST_F(HostileFiles, AreStoredAsTextOrRefused) {
  Feed({"save"}, "supplier_goods");
  Feed({"form", "save"}, "form");
  Feed({"ranges", "2040", "--set"}, "ranges");
  Run({"ranges", "2040", "--set", Example("ranges")});
  Run({"select", "2040", "803", "804"});
  Feed({"rates", "2040", "--set"}, "rates");
}

TEST_F(HostileFiles, WordsAreRefusedLikewise) {
  const std::vector<std::vector<Text>> verbs = {
      {"show"},   {"enable"},        {"disable"},      {"forbidden"},      {"restore"},        {"delete", "--yes"},
      {"ranges"}, {"items"},         {"rates"},        {"select"},         {"form", "show"},   {"select", "2040"},
      {"check"},  {"check", "2041"}, {"list", "--id"}, {"list", "--type"}, {"list", "--class"}};
  for (const std::vector<Text>& verb : verbs) {
    for (const char* text : kHostile) {
      std::vector<Text> arguments = verb;
      arguments.push_back(text);
      EXPECT_NE(Run(arguments).status, 0) << verb.front() << " " << text;
    }
  }
  for (const char* text : kHostile) Run({"name-taken", text});
  EXPECT_TRUE(CanaryLives());
}

}  // namespace
}  // namespace rebate
