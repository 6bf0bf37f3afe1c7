#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"
#include "service/rebate_rule_mgr.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

// Three schemes of type 2040 (two enabled) and one of 2046, by their ids 1 to 4.
class SchemeLife : public testing::Test {
 protected:
  SchemeLife() {
    AddMasterData(account_);
    const std::pair<Long, Long> schemes[] = {{2040, 3}, {2040, 7}, {2040, 17}, {2046, 3}};
    for (const auto& [type, organisation] : schemes) {
      SchemeRequest request;
      request.type = type;
      request.range_item_class = 8;
      request.name = "scheme " + std::to_string(organisation) + " of " + std::to_string(type);
      EXPECT_TRUE(request.Organisation(1, 8, organisation).Saves(account_));
    }
    account_.Execute("update t_FL_SchemeList set FEnable=0 where FSchemeID=3");
  }

  Text States() const {
    return Replace(account_.Rows("select FEnable from t_FL_SchemeList order by FSchemeID"), "\n", " ");
  }

  TestAccount account_;
  BaseInfoMgr manager_;
  RebateRuleMgr rules_;
};

TEST_F(SchemeLife, WordsTheQuestionBeforeAFlip) {
  account_.Execute("update t_FL_SchemeList set FEnable=0 where FSchemeID=2");
  const Text question =
      "返利模式[按供应商采购总金额返采购额的X%]中存在已启用方案[scheme 3 of 2040]，是否继续?\r\n"
      "继续操作，将会启用当前方案，同时禁用方案[scheme 3 of 2040]。";
  account_.Execute("update t_FL_SchemeMode set FTypeName='按供应商采购总金额返采购额的X%' where FRebateType=2040");
  struct {
    Long scheme;
    bool enabled;
    bool result;
    Text message;
    bool completes;
  } const cases[] = {
      {99, true, false, "当前返利模式已经不存在。", true},
      {1, true, false, "as passed", false},
      {3, false, false, "as passed", false},
      {1, false, true, "as passed", true},
      {3, true, true, question, true},
  };
  Trace trace;
  for (const auto& one : cases) {
    Text message = "as passed";
    EXPECT_EQ(manager_.CheckEnableScheme(account_.dsn(), one.scheme, one.enabled, message), one.result) << one.scheme;
    EXPECT_EQ(message, one.message);
    EXPECT_EQ(trace.Take().back() == "complete", one.completes) << one.scheme;
  }
  // Nobody is asked about: siblings without a type row, siblings when a scheme is disabled, disabled siblings.
  const std::pair<const char*, bool> quiet[] = {
      {"FRebateType=77", true}, {"FRebateType=2040, FEnable=1", false}, {"FEnable=0", true}};
  for (const auto& [state, enabled] : quiet) {
    account_.Execute(Text("update t_FL_SchemeList set ") + state);
    Text message = "as passed";
    EXPECT_TRUE(manager_.CheckEnableScheme(account_.dsn(), 3, enabled, message)) << state;
    EXPECT_EQ(message, "as passed") << state;
  }
}

TEST_F(SchemeLife, TakesAnyStateButZeroForEnabled) {
  account_.Execute("update t_FL_SchemeList set FEnable=2");
  Text message;
  EXPECT_FALSE(manager_.CheckEnableScheme(account_.dsn(), 1, true, message));
  EXPECT_TRUE(manager_.EnableScheme(account_.dsn(), 1, true));
  EXPECT_EQ(States(), "1 2 2 2");
  EXPECT_TRUE(manager_.EnableScheme(account_.dsn(), 2, false));
  EXPECT_TRUE(rules_.UnForbidSchemeList(account_.dsn(), "3"));
  EXPECT_EQ(States(), "1 0 1 2");
}

TEST_F(SchemeLife, AnswersTrueWhereTheSiblingsCannotBeAsked) {
  Trace trace;
  trace.RefuseStatement(2);
  Text message = "as passed";
  EXPECT_TRUE(manager_.CheckEnableScheme(account_.dsn(), 3, true, message));
  EXPECT_EQ(message, "as passed");
  EXPECT_NE(trace.Take().back(), "complete");
}

TEST_F(SchemeLife, EnablingDisablesTheSiblingsInOneBatch) {
  Trace trace;
  ASSERT_TRUE(manager_.EnableScheme(account_.dsn(), 3, true));
  EXPECT_EQ(
      trace.TakeStatements(),
      (std::vector<Text>{
          "--禁用当前方案同类型方案\r\nUpdate l Set l.FEnable =0\r\nFrom t_FL_SchemeList l\r\nInner Join (Select "
          "FRebateType From t_FL_SchemeList Where FSchemeID =3) e On l.FRebateType=e.FRebateType\r\nWhere l.FEnable "
          "=1 And l.FSchemeID<>3\r\n\r\n--启用当前方案\r\nUpdate t_FL_SchemeList Set FEnable =1 Where "
          "IsNull(FEnable,0)<>1 And FSchemeID=3"}));
  EXPECT_EQ(States(), "0 0 1 1");
  ASSERT_TRUE(manager_.EnableScheme(account_.dsn(), 3, false));
  EXPECT_EQ(States(), "0 0 0 1");
  EXPECT_TRUE(manager_.EnableScheme(account_.dsn(), 99, true));
  account_.Execute("update t_FL_SchemeList set FEnable=null where FSchemeID=1");
  EXPECT_TRUE(manager_.EnableScheme(account_.dsn(), 1, false));
  EXPECT_EQ(States(), "NULL 0 0 1");
}

TEST_F(SchemeLife, WritesAllOrNothing) {
  ExpectAllOrNothing(account_, [&] { return manager_.EnableScheme(account_.dsn(), 3, true); });
  ExpectAllOrNothing(account_, [&] { return manager_.EnableScheme(account_.dsn(), 3, false); });
  ExpectAllOrNothing(account_, [&] { return rules_.UnForbidSchemeList(account_.dsn(), "1,2"); });
  ExpectAllOrNothing(account_, [&] { return manager_.DelSchemeData(account_.dsn(), "1,2"); });
}

TEST_F(SchemeLife, ListsForbiddenSchemesLive) {
  account_.Execute("update t_FL_SchemeList set FEnable=0, FModifyDate='2026-01-01' where FSchemeID=1");
  account_.Execute(
      "insert into t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID) values (1,1,8,0), (1,2,8,0), (1,1,1,0)");
  account_.Execute("delete from t_FL_AllOrgs where FSchemeID=3");
  account_.Execute("update t_FL_SchemeList set FEnable=null where FSchemeID=2");
  account_.Execute("update t_FL_SchemeList set FEnable=0, FCheckerID=99 where FSchemeID=4");
  const Ref<Recordset> rows = ObjectAs<Recordset>(rules_.GetForbidSchemeList(account_.dsn(), 24));
  ASSERT_TRUE(rows);
  account_.Execute("delete from t_FL_SchemeList");  // the rows outlive the call
  Text text;
  for (; !rows->Eof(); rows->MoveNext()) {
    for (const char* field : {"FSchemeID", "FEnable", "FCheckerID", "FOrg", "FNumber", "FName"}) {
      text += ToText(rows->FieldValue(field)) + "|";
    }
    text += "\n";
  }
  EXPECT_EQ(text,
            "3|禁用|Wang|||全部供应商|\n"
            "1|禁用|Wang|||全部客户|\n"
            "1|禁用|Wang|||全部供应商|\n"
            "1|禁用|Wang||S03|Third|\n");
  EXPECT_FALSE(rules_.GetForbidSchemeList(account_.dsn(), 32));
}

TEST_F(SchemeLife, RestoresForbiddenSchemesBesideTheirSiblings) {
  ASSERT_TRUE(rules_.UnForbidSchemeList(account_.dsn(), "3, 99,1"));
  EXPECT_EQ(States(), "1 1 1 1");
  for (const char* wrong : {"", "1,,2", "x"}) EXPECT_FALSE(rules_.UnForbidSchemeList(account_.dsn(), wrong)) << wrong;
}

TEST_F(SchemeLife, DeletesSchemesWithTheirRowsAndKeepsLinks) {
  account_.Execute(R"(insert into t_FL_SchemeLink (FSchemeID) values (2)
    insert into t_FL_AllItems (FSchemeID) select FSchemeID from t_FL_SchemeList
    insert into t_FL_CheckItems (FSchemeID) select FSchemeID from t_FL_SchemeList
    insert into t_FL_RebateRule (FSchemeID) select FSchemeID from t_FL_SchemeList)");
  EXPECT_TRUE(manager_.CheckSchemeAllowDel(account_.dsn(), "1,3"));
  EXPECT_FALSE(manager_.CheckSchemeAllowDel(account_.dsn(), "1,2"));
  ASSERT_TRUE(manager_.DelSchemeData(account_.dsn(), "1, 2,1.5,99"));
  for (const char* table :
       {"t_FL_SchemeList", "t_FL_RebateRange", "t_FL_RebateRule", "t_FL_AllOrgs", "t_FL_AllItems", "t_FL_CheckItems"}) {
    EXPECT_EQ(account_.Rows("select distinct FSchemeID from " + Text(table) + " order by FSchemeID"), "3\n4") << table;
  }
  EXPECT_EQ(account_.Rows("select FSchemeID from t_FL_SchemeLink"), "2");
}

TEST_F(SchemeLife, RefusesListsThatAreNoListOfNumbers) {
  const Text before = account_.Everything();
  Trace trace;
  for (const char* list : {"1,,2", "1,", "1,x,2", ","}) {
    EXPECT_FALSE(manager_.DelSchemeData(account_.dsn(), list)) << list;
    EXPECT_FALSE(manager_.CheckSchemeAllowDel(account_.dsn(), list)) << list;
  }
  EXPECT_TRUE(trace.TakeStatements().empty());
  EXPECT_FALSE(manager_.DelSchemeData(account_.dsn(), ""));
  EXPECT_FALSE(manager_.CheckSchemeAllowDel(account_.dsn(), ""));
  EXPECT_EQ(trace.TakeStatements().size(), 2u);
  EXPECT_EQ(account_.Everything(), before);
}

}  // namespace
}  // namespace rebate
