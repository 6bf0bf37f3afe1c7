#include <cstdlib>
#include <filesystem>
#include <set>

#include "client/json_file.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// Two schemes of goods type 2041 on an account, the second over other goods.
class ClientLife : public ToolTest {
 protected:
  ClientLife() {
    Json request = ReadJsonFile(Example("supplier_goods"));
    EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
    request["SchemeMainData"]["FSchemeName"] = "饮品返利";
    request["AllGridRows"] = Json::array({request["AllGridRows"][1]});
    request["AllGridRows"][0]["FItemIDs"][0] = ParseJson(R"({"FRowID":1,"FItemID":405,"FUnitID":3,"FShowName":""})");
    for (Json& rate : request["AllGridRows"][0]["FRebateRates"]) rate["FRowID"] = 1;
    const Outcome saved = Run({"save", File("second.json", JsonLine(request))});
    EXPECT_EQ(saved.status, 0) << saved.err;
  }

  // The enabled schemes' ids, as in "1 2".
  Text Enabled() {
    // The list goes by the second in which a scheme was changed.
    std::set<Text> sorted;
    for (const Json& row : RunJson({"list"})) sorted.insert(std::to_string(row["FSchemeID"].get<Long>()));
    Text ids;
    for (const Text& id : sorted) ids += id + " ";
    return ids;
  }
};

TEST_F(ClientLife, EachStepTellsWhatItDid) {
  const struct {
    std::vector<Text> arguments;
    int status;
    Text told;     // on the one stream or the other
    Text enabled;  // afterwards
  } steps[] = {
      {{"enable", "1"}, 0, "Scheme 1 is already enabled.\n", "1 2 "},
      {{"disable", "1"}, 0, "Scheme 1 is now disabled.\n", "2 "},
      {{"disable", "1"}, 0, "Scheme 1 is already disabled.\n", "2 "},
      {{"disable", "77"}, 1, "当前返利模式已经不存在。", "2 "},
      {{"enable", "77", "--yes"}, 1, "当前返利模式已经不存在。", "2 "},
      {{"enable", "1"}, 1, "同时禁用方案[饮品返利]。\nNothing was changed", "2 "},
      {{"enable", "1", "--yes"}, 0, "Scheme 1 is now enabled.\nDisabled scheme 2 (饮品返利).\n", "1 "},
      {{"restore", "2,77", "1"}, 1, "There is no scheme 77; nothing was changed", "1 "},
      {{"restore", "1, 2"},
       0,
       "Already enabled: scheme 1 (洗护商品采购返利).\nRestored scheme 2 (饮品返利).\n",
       "1 2 "},
      {{"delete", "77", "--yes"}, 1, "There is no scheme 77; nothing was changed", "1 2 "},
      {{"delete", "1", "77", "--yes"}, 1, "There is no scheme 77; nothing was changed", "1 2 "},
      {{"delete", "1"}, 1, "  scheme 1 (洗护商品采购返利), enabled\nDelete?\nNothing was changed", "1 2 "},
      {{"delete", "1", "1", "--yes"}, 0, "Deleted scheme 1 (洗护商品采购返利).\n", "2 "},
      {{"disable", "2"}, 0, "Scheme 2 is now disabled.\n", ""},
      {{"enable", "2"}, 0, "Scheme 2 is now enabled.\n", "2 "},
  };
  for (const auto& step : steps) {
    const Outcome ran = Run(step.arguments);
    EXPECT_EQ(ran.status, step.status) << step.told << ran.err;
    EXPECT_TRUE(Holds(ran.out + ran.err, step.told)) << ran.out << ran.err;
    EXPECT_EQ(Enabled(), step.enabled) << step.told;
  }
}

TEST_F(ClientLife, OnATerminalTheQuestionIsAsked) {
  Run({"disable", "1"});
  for (const char* no : {"n\n", "\n", "", "yess\n"}) {
    const Outcome refused = Run({"enable", "1"}, no, true);
    EXPECT_EQ(refused.status, 1) << no;
    EXPECT_TRUE(Holds(refused.out, "是否继续?\n继续操作")) << refused.out;
    EXPECT_EQ(Enabled(), "2 ") << no;
  }
  Text id = "1";
  for (const char* yes : {"y\n", " YES \r\n", "是\n", "是"}) {
    EXPECT_EQ(Run({"enable", id}, yes, true).status, 0) << yes;
    EXPECT_EQ(Enabled(), id + " ") << yes;
    id = id == "1" ? "2" : "1";
  }
}

TEST_F(ClientLife, AllThatEnablingDisablesIsNamed) {
  Sql("insert into t_FL_SchemeList (FSchemeName, FRebateType, FCheckerID, FEnable) values (N'第三', 2041, 1, 0)");
  const Outcome refused = Run({"enable", "3"});
  EXPECT_TRUE(
      Holds(refused.err, "2 schemes are disabled then:\n  scheme 1 (洗护商品采购返利)\n  scheme 2 (饮品返利)\n"))
      << refused.err;
  EXPECT_EQ(Enabled(), "1 2 ");
  EXPECT_EQ(RunJson({"enable", "3", "--yes"})["siblingsDisabled"], Json({1, 2}));
}

TEST_F(ClientLife, DeletionIsAskedForOnATerminal) {
  EXPECT_EQ(Run({"delete", "1"}, "n\n", true).status, 1);
  EXPECT_EQ(Enabled(), "1 2 ");
  EXPECT_EQ(Run({"delete", "1"}, "y\n", true).status, 0);
  EXPECT_EQ(Enabled(), "2 ");
}

TEST_F(ClientLife, ASchemeInThePlaceOfADisabledOneStaysDisabled) {
  Run({"disable", "1"});
  const Text request = File("again.json", Run({"show", "1", "--json"}).out);
  EXPECT_EQ(Run({"save", request}).out,
            "Stored 洗护商品采购返利 as scheme 3 in the place of scheme 1, disabled as that was.\n");
  EXPECT_EQ(Enabled(), "2 ");
}

#ifndef _WIN32
TEST_F(ClientLife, ASchemeIsEditedInItsPlace) {
  unsetenv("VISUAL");
  const auto edit = [&](const char* editor, const Text& id) {
    setenv("EDITOR", editor, 1);
    return Run({"edit", id});
  };
  EXPECT_EQ(edit("true", "1").out, "Nothing was changed.\n");
  EXPECT_EQ(edit("sed -i s/洗护/日化/", "1").out, "Stored 日化商品采购返利 as scheme 3 in the place of scheme 1.\n");
  EXPECT_EQ(Enabled(), "2 3 ");
  EXPECT_EQ(edit("true", "1").err, "rebate: There is no scheme 1; nothing was changed\n");
  for (const char* wrong : {"sed -i s/801/899/", "sed -i s/{//", "false"}) {
    const Outcome refused = edit(wrong, "3");
    EXPECT_EQ(refused.status, 1) << wrong;
    const std::size_t draft = refused.err.find("draft is ");
    ASSERT_NE(draft, Text::npos) << refused.err;
    const std::size_t end = refused.err.find(".json", draft);
    const Text path = refused.err.substr(draft + 9, end + 5 - draft - 9);
    EXPECT_TRUE(std::filesystem::remove(files::ToPath(path))) << path;
  }
  EXPECT_EQ(Enabled(), "2 3 ");
  unsetenv("EDITOR");
  EXPECT_TRUE(Holds(Run({"edit", "3"}).err, "EDITOR names no editor"));
}
#endif

TEST_F(ClientLife, ForbiddenSchemesStandInOneRowEach) {
  Sql("insert into t_FL_AllOrgs (FSchemeID, FRowID, FItemClassID, FItemID) values (1, 1, 8, 802), (1, 1, 8, 0)");
  EXPECT_EQ(RunJson({"forbidden", "24"}), Json::array());
  Run({"disable", "1"});
  const Json rows = RunJson({"forbidden", "24"});
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0]["FOrg"], "全部供应商,S001_上海东方贸易有限公司,S002_广州南方日化厂");
  const Outcome listed = Run({"list", "--status", "disabled", "--class", "24"});
  EXPECT_EQ(Run({"forbidden", "24"}).out, listed.out);
  EXPECT_EQ(RunJson({"forbidden", "32"}), Json::array());
}

TEST_F(ClientLife, LinkedSchemesAreDeletedByForceAlone) {
  Sql("insert into t_FL_SchemeLink (FSchemeID, FBillNo) values (2, 'B1'), (9, 'B2')");
  const Outcome refused = Run({"delete", "1", "2", "--yes"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(Holds(refused.err, "scheme 2 (饮品返利) can't be deleted")) << refused.err;
  EXPECT_EQ(Enabled(), "1 2 ");
  EXPECT_EQ(Run({"delete", "1", "2", "--force", "--yes"}).out,
            "Deleted scheme 1 (洗护商品采购返利).\nDeleted scheme 2 (饮品返利).\n");
  EXPECT_EQ(Enabled(), "");
}

TEST_F(ClientLife, WhatIsNoIdIsWrongUsage) {
  for (const char* verb : {"restore", "delete"}) {
    EXPECT_EQ(Run({verb}).status, 2);
    for (const char* ids : {"", ",", "1,,2", "1,", "a", "1,x", "1.5", "0", "99999999999", "1;2"}) {
      EXPECT_EQ(Run({verb, ids}).status, 2) << verb << " '" << ids << "'";
    }
  }
  EXPECT_EQ(Run({"enable", "one"}).status, 2);
  EXPECT_EQ(Run({"forbidden"}).status, 2);
  EXPECT_EQ(Enabled(), "1 2 ");
}

TEST_F(ClientLife, AFailureTellsItsReason) {
  Run({"disable", "1"});
  Sql("drop table t_FL_SchemeLink");
  Sql("drop table t_FL_AllOrgs");
  for (const auto& arguments : std::vector<std::vector<Text>>{{"delete", "1", "--yes"},
                                                              {"delete", "1", "--force", "--yes"},
                                                              {"forbidden", "24"},
                                                              {"list", "--status", "all"}}) {
    const Outcome ran = Run(arguments);
    EXPECT_EQ(ran.status, 1) << arguments[0];
    EXPECT_TRUE(Holds(ran.err, "t_FL_")) << arguments[0] << ran.err;
  }
  EXPECT_EQ(Run({"disable", "2"}).out, "Scheme 2 is now disabled.\n");
}

}  // namespace
}  // namespace rebate
