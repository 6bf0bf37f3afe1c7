#include "client/json_file.h"
#include "platform/files/files.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// Stored: 1, a disabled scheme of goods; 2, an enabled one over the same goods; 3, a form.
class ClientBulk : public ToolTest {
 protected:
  ClientBulk() {
    EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
    Run({"disable", "1"});
    EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
    EXPECT_EQ(Run({"form", "save", Example("form")}).status, 0);
  }

  // A request for a supplier of its own, which replaces a scheme where `replaced` names one.
  static Json Request(const Text& name, const Text& supplier, Long replaced = 0) {
    Json request = ReadJsonFile(Example("supplier_goods"));
    request["SchemeMainData"]["FSchemeName"] = name;
    request["SchemeMainData"]["FSchemeID"] = replaced;
    request["AllOrgsData"][0]["FItemID"] = supplier;
    return request;
  }
  Text Lines(const std::vector<Json>& schemes) {
    Text lines;
    for (const Json& scheme : schemes) lines += JsonLine(scheme) + "\n\n";
    return File("schemes.jsonl", lines);
  }
  static Text Stored(const Text& dsn) {
    Text all;
    for (const char* table : {"t_FL_SchemeList", "t_FL_RebateRange", "t_FL_RebateRule", "t_FL_AllOrgs", "t_FL_AllItems",
                              "t_FL_CheckItems", "t_User"}) {
      all += RunRebate({"sql", dsn, Text("select * from ") + table, "--json"}).out;
    }
    return all;
  }
};

TEST_F(ClientBulk, OneRefusalUndoesAllWhereAllOrNothingIsAskedFor) {
  const Json overlapping = Request("重叠", "S002");
  Json unknown = Request("未知", "S099");
  const std::vector<std::vector<Json>> files = {
      {Request("甲", "S002"), Request("乙", "S003", 2), overlapping, Request("丙", "S004")},
      {Request("甲", "S002"), unknown, Request("乙", "S002")},
      {ReadJsonFile(Example("form")), Request("甲", "S002")},
      {Request("甲", "S002"), Json::parse("{}")},
      {Request("甲", "S002"), Request("乙", "S003", 77)}};
  const Text before = Stored(dsn_);
  for (const std::vector<Json>& file : files) {
    const Outcome refused = Run({"save", Lines(file), "--all-or-nothing"});
    EXPECT_EQ(refused.status, 1) << refused.out;
    EXPECT_TRUE(Holds(refused.out, "Stored 0 of")) << refused.out;
    EXPECT_TRUE(Holds(refused.out, "the account is as it was.\n")) << refused.out;
    EXPECT_TRUE(Stored(dsn_) == before) << refused.out << refused.err;
  }
  const Outcome stored = Run(
      {"save", Lines({Request("甲", "S002"), Request("乙", "S003", 2), Request("丙", "S001")}), "--all-or-nothing"});
  EXPECT_EQ(stored.status, 0) << stored.err;
  EXPECT_TRUE(Holds(stored.out, "4  甲      stored\n")) << "no id was used up\n" << stored.out;
  EXPECT_TRUE(Holds(stored.out, "5  乙      stored in the place of 2\n")) << stored.out;
  EXPECT_TRUE(Holds(stored.out, "Stored 3 of 3, refused 0.\n")) << stored.out;
}

TEST_F(ClientBulk, EachStandsForItselfOtherwise) {
  const Text lines =
      Lines({Request("甲", "S002"), Request("重叠", "S002"), Request("乙", "S099"), Request("丙", "S003")});
  const Text path = File("mixed.json", files::ReadWhole(lines).value() + "{\"bad\n");
  const Outcome saved = Run({"save", path});
  EXPECT_EQ(saved.status, 1);
  EXPECT_TRUE(Holds(saved.out, "Stored 2 of 5, refused 3.\n")) << saved.out;
  for (const char* said : {":3: overlaps with 甲: S002 广州南方日化厂, G001 茉莉香皂\n",
                           ":5: AllOrgsData[1].FItemID: there is no supplier S099\n", "mixed.json:9: "}) {
    EXPECT_TRUE(Holds(saved.err, said)) << said << saved.err;
  }
  const Json told = RunJson({"save", Lines({Request("丁", "S004"), Request("重叠", "S004")})});
  EXPECT_EQ(told["stored"], 1);
  EXPECT_EQ(told["schemes"][0]["SchemeID"], 6);
  EXPECT_TRUE(Holds(told["schemes"][1]["why"][1].get<Text>(), "overlaps with 丁")) << told;
  EXPECT_TRUE(Holds(Run({"save", "-"}, Request("戊", "S006").dump(2)).out, "Stored 1 of 1, refused 0.\n"));
  EXPECT_TRUE(Holds(Run({"save", REBATE_SOURCE_DIR "/docs"}).err, "There is no scheme in"))
      << "of files that aren't .json";
}

// Disabled schemes overlap with enabled ones, and must neither be refused for it nor come back enabled.
TEST_F(ClientBulk, WhatIsExportedStandsInAnotherAccountAsItDid) {
  const Text folder = account_.File("schemes/");
  EXPECT_EQ(Run({"export", "schemes", folder, "--new"}).out, "Exported 3 schemes to " + folder + ".\n");
  EXPECT_TRUE(Holds(Run({"export", "schemes", folder}).err, "holds JSON files already"));
  const Text lines = Run({"export", "schemes", "--new"}).out;
  for (const bool as_lines : {false, true}) {
    const Text other = account_.File(as_lines ? "lines.db" : "folder.db");
    RunRebate({"init", other, "--sample"});
    const Outcome saved = RunRebate({"save", as_lines ? "-" : folder, "--all-or-nothing", "--dsn", other}, lines);
    EXPECT_EQ(saved.status, 0) << saved.err;
    EXPECT_EQ(RunRebate({"export", "schemes", "--new", "--dsn", other}).out, lines);
    EXPECT_TRUE(Holds(RunRebate({"list", "--dsn", other}).out, "(1 scheme)"));
  }
  EXPECT_EQ(Run({"save", File("own.jsonl", Run({"export", "schemes"}).out)}).status, 1) << "1 overlaps with 2 here";
}

}  // namespace
}  // namespace rebate
