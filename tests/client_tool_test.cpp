#include <gtest/gtest.h>

#include "tests/tool_kit.h"

namespace rebate {
namespace {

class ClientTool : public ToolTest {};

TEST_F(ClientTool, InitTouchesNoAccountThatIsThere) {
  RunRebate({"sql", dsn_, "update t_Supplier set FName='X' where FItemID=801"});
  const Outcome again = RunRebate({"init", dsn_});
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(Holds(again.err, dsn_)) << again.err;
  EXPECT_TRUE(Holds(RunRebate({"sql", dsn_, "select FName from t_Supplier where FItemID=801"}).out, "X"));
}

TEST_F(ClientTool, SqlBatchesStandOrFallByThemselves) {
  const Outcome ran = RunRebate({"sql", dsn_, "--json"},
                                "insert into t_User (FUserID, FName) values (7, '甲')\nGO\n"
                                "insert into t_User (FUserID, FName) values (8, '乙') select abc from t_User\n go \n"
                                "insert into t_User (FUserID, FName) values (9, '丙')\n");
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, "");
  EXPECT_EQ(ran.err, "rebate: batch 2: Invalid column name 'abc'.\n");
  const Outcome users =
      RunRebate({"sql", dsn_, "select FUserID, FName from t_User where FUserID<10 order by FUserID", "--json"});
  EXPECT_EQ(users.out, "{\"FUserID\":1,\"FName\":\"Administrator\"}\n{\"FUserID\":7,\"FName\":\"甲\"}\n");
}

TEST_F(ClientTool, SqlShowsWhatABatchSays) {
  const Text script =
      "print '开始' select FUserID from t_User where FUserID=1 print '完成'\nGO\nraiserror('%d left',10,1,3)\nGO\n"
      "print 'before' select abc from t_User\n";
  const Outcome table = RunRebate({"sql", dsn_}, script);
  EXPECT_TRUE(table.out.starts_with("开始\n完成\nFUserID")) << table.out;
  EXPECT_TRUE(table.out.ends_with("3 left\nbefore\n")) << table.out;
  const Outcome json = RunRebate({"sql", dsn_, "--json"}, script);
  EXPECT_EQ(json.out, "{\"FUserID\":1}\n");
  EXPECT_EQ(json.err, "开始\n完成\n3 left\nbefore\nrebate: batch 3: Invalid column name 'abc'.\n");
}

TEST_F(ClientTool, SqlRunsABatchAsOftenAsGoSays) {
  Sql("create table t_n (FID int)\nGO\ninsert into t_n values (1)\nGO 3\ninsert into t_n values (2)\ngo");
  EXPECT_EQ(RunRebate({"sql", dsn_, "--json", "select count(*) as n from t_n"}).out, "{\"n\":4}\n");
  const Outcome refused = RunRebate({"sql", dsn_, "delete from t_n\nGO 0"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err, "rebate: Line 2: GO takes the number of times to run the batch, from 1 on, not '0'.\n");
  EXPECT_EQ(RunRebate({"sql", dsn_, "--json", "select count(*) as n from t_n"}).out, "{\"n\":4}\n");
}

TEST_F(ClientTool, AnOverlappingSchemeIsRefusedWithItsRows) {
  EXPECT_TRUE(Save("supplier_total").starts_with("0 Stored 2026年度供应商总额返利 as scheme 1"));
  EXPECT_TRUE(Save("supplier_goods").starts_with("0 Stored"));
  const Text refusal = Save("supplier_goods_overlap");
  for (const char* part : {"1 存在重复方案信息\n", "洗护商品采购返利", "S001", "G002", "G003"}) {
    EXPECT_TRUE(Holds(refusal, part)) << part << " in " << refusal;
  }
  EXPECT_FALSE(Holds(refusal, "G001")) << refusal;
}

TEST_F(ClientTool, StoredSchemesAreShownAndListed) {
  Save("supplier_goods");
  const Outcome shown = RunRebate({"show", "1", "--dsn", dsn_});
  EXPECT_EQ(shown.status, 0) << shown.err;
  for (const char* part : {"洗护商品采购返利", "上海东方贸易有限公司", "柔顺洗发露", "20000 – 100000", "3.5"}) {
    EXPECT_TRUE(Holds(shown.out, part)) << part << " in " << shown.out;
  }
  const Json whole = ParseJson(RunRebate({"show", "1", "--dsn", dsn_, "--json"}).out);
  EXPECT_EQ(whole["AllGridRows"][1]["FRebateRates"].size(), 2u);

  const auto listed = [&](std::vector<Text> filter) {
    filter.insert(filter.begin(), {"list", "--json", "--dsn", dsn_});
    return ParseJson(RunRebate(filter).out).size();
  };
  EXPECT_EQ(listed({}), 1u);
  EXPECT_EQ(listed({"--class", "24", "--type", "2041", "--name", "洗护", "--from", "S001", "--to", "S001"}), 1u);
  EXPECT_EQ(listed({"--from", "S002"}), 0u);
  EXPECT_EQ(listed({"--status", "disabled"}), 0u);
  EXPECT_EQ(listed({"--status", "all", "--id", "1"}), 1u);
  EXPECT_EQ(listed({"--class", "32"}), 0u);
}

TEST_F(ClientTool, EveryClassHasItsTypes) {
  const Json types = ParseJson(RunRebate({"types", "--dsn", dsn_, "--json"}).out);
  ASSERT_EQ(types.size(), 16u);
  EXPECT_EQ(types[0]["FRebateType"], 2040);
  EXPECT_EQ(types[15]["FRebateType"], 4021);
}

TEST_F(ClientTool, FailuresTellTheirReason) {
  const Text nowhere = dsn_ + ".missing";
  RunRebate({"sql", dsn_, "drop table t_FL_RebateRange"});
  Save("supplier_total");
  const struct {
    std::vector<Text> arguments;
    int status;
    Text reason;
  } cases[] = {
      {{"types", "--dsn", nowhere}, 1, nowhere},
      {{"list", "--dsn", nowhere}, 1, "rebate init"},
      {{"show", "99", "--dsn", dsn_}, 1, "Scheme 99 does not exist"},
      {{"save", Example("supplier_total"), "--dsn", dsn_}, 1, "t_FL_RebateRange"},
      {{"save", File("empty.json", ""), "--dsn", dsn_}, 1, "empty.json: parse error"},
      {{"show", "--dsn", dsn_}, 2, "ID is required"},
      {{"list", "--dsn", dsn_, "--status", "maybe"}, 2, "--status"},
      {{"frobnicate"}, 2, ""},
  };
  for (const auto& c : cases) {
    const Outcome outcome = RunRebate(c.arguments);
    EXPECT_EQ(outcome.status, c.status) << c.arguments[0] << outcome.err;
    EXPECT_TRUE(Holds(outcome.err, c.reason)) << outcome.err;
  }
}

TEST_F(ClientTool, ProgramsCallByName) {
  const Outcome served =
      RunRebate({"call", "--dsn", dsn_, "--trace"},
                "{\"op\":\"BaseInfoMgr.ExistsSchemeName\",\"args\":{\"lSchemeID\":0,\"strSchemeName\":\"x\"}}\n"
                "{\"op\":\"RebateRuleMgr.TransMode\"}\n");
  std::istringstream answers(served.out);
  Text first;
  std::getline(answers, first);
  const Json answer = ParseJson(first);
  EXPECT_EQ(answer["result"], false);
  EXPECT_FALSE(answer.contains("args"));
  ASSERT_EQ(answer["trace"].size(), 5u) << first;
  EXPECT_TRUE(answer["trace"][3].contains("execute")) << first;
  Text second;
  std::getline(answers, second);
  EXPECT_EQ(second, "{\"op\":\"RebateRuleMgr.TransMode\",\"result\":2,\"trace\":[]}");
}

}  // namespace
}  // namespace rebate
