#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

class SchemeSave : public testing::Test {
 protected:
  SchemeSave() { AddMasterData(account_); }

  Text SchemeIds() const { return account_.Rows("select FSchemeID from t_FL_SchemeList order by FSchemeID"); }

  TestAccount account_;
};

TEST_F(SchemeSave, SendsItsStatementsInOrder) {
  Trace trace;
  SchemeRequest request;
  request.replaces = 5;
  request.name = "O'Neil";
  request.Organisation(0, 8, 7).GridRow({71}, "12.5%");
  request.organisations = List({Row({{"FRowID", 0},
                                     {"FItemClassID", 8},
                                     {"FItemID", 7},
                                     {"FShowName", "S'7"},
                                     {"CheckPoints", Row({{"71", 1}, {"72", 1}})}})});
  ASSERT_TRUE(request.Saves(account_));
  const std::vector<Text> sent = trace.TakeStatements();
  const Text id = SchemeIds();
  const std::vector<Text> expected = {
      "if object_id('tempdb..#TMP_AllOrgs') is not null \r\nBegin\r\n    drop table #TMP_AllOrgs\r\nEnd",
      "if object_id('tempdb..#TMP_AllItems') is not null \r\nBegin\r\n    drop table #TMP_AllItems\r\nEnd",
      "if object_id('tempdb..#TMP_OrgJoinItem') is not null \r\nBegin\r\n    drop table #TMP_OrgJoinItem\r\nEnd",
      "SELECT * INTO #TMP_AllOrgs FROM t_FL_AllOrgs WHERE FID =-1\r\n"
      "SELECT * INTO #TMP_AllItems FROM t_FL_AllItems WHERE FID =-1",
      "INSERT INTO #TMP_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName)\r\nVALUES (5,1,8,7,'')",
      "INSERT INTO #TMP_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName)\r\nVALUES (5,1,71,0,'')",
      "INSERT INTO #TMP_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) \r\n"
      "SELECT o.FSchemeID,o.FRowID,o.FItemClassID,i.FItemID,'' FROM #TMP_AllOrgs o LEFT JOIN t_Item i \r\n"
      "ON o.FItemClassID =i.FItemClassID WHERE o.FItemID =0 ",
      "Delete From #TMP_AllOrgs Where FItemID=0",
      "pairs",
      "overlap",
      "DROP TABLE #TMP_AllOrgs\r\nDROP TABLE #TMP_AllItems\r\nDROP TABLE #TMP_OrgJoinItem",
      "INSERT INTO t_FL_SchemeList (FSchemeNo,FSchemeName,FRebateType,FModifyDate,FCheckerID,FNote,FEnable)\r\n"
      "VALUES ('0','O''Neil',2041,GETDATE(),1001,'note',1)",
      "SELECT @@identity as FSchemeIDNew",
      "DELETE FROM t_FL_AllItems WHERE FSchemeID=" + id,
      "DELETE FROM t_FL_AllOrgs WHERE FSchemeID=" + id,
      "DELETE FROM t_FL_CheckItems WHERE FSchemeID=" + id,
      "DELETE FROM t_FL_RebateRange WHERE FSchemeID=" + id,
      "DELETE FROM t_FL_RebateRule WHERE FSchemeID=" + id,
      "INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID)\r\nVALUES (0,100,1," + id + ")",
      "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName)\r\nVALUES (" + id + ",1,8,7,'S''7')",
      "INSERT INTO t_FL_CheckItems (FSchemeID,FRowID,FItemClassID,FItemID)\r\nVALUES (" + id + ",0,8,71)",
      "INSERT INTO t_FL_CheckItems (FSchemeID,FRowID,FItemClassID,FItemID)\r\nVALUES (" + id + ",0,8,72)",
      "INSERT INTO t_FL_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName)\r\nVALUES (" + id + ",1,71,0,'goods')",
      "INSERT INTO t_FL_RebateRule (FSchemeID,FRowID,FItemID,FOrgID,FRebateRate,FIndex)\r\nVALUES (" + id +
          ",1,1,0,12.5,1)",
      "DELETE FROM t_FL_AllItems WHERE FSchemeID=5",
      "DELETE FROM t_FL_AllOrgs WHERE FSchemeID=5",
      "DELETE FROM t_FL_CheckItems WHERE FSchemeID=5",
      "DELETE FROM t_FL_RebateRange WHERE FSchemeID=5",
      "DELETE FROM t_FL_RebateRule WHERE FSchemeID=5",
      "DELETE FROM t_FL_SchemeList WHERE FSchemeID=5",
  };
  ASSERT_EQ(sent.size(), expected.size());
  for (std::size_t i = 0; i < sent.size(); ++i) {
    if (expected[i] == "pairs" || expected[i] == "overlap") continue;  // seen by what they find
    EXPECT_EQ(sent[i], expected[i]);
  }
}

TEST_F(SchemeSave, StoresAHeadAloneFromEmptyLists) {
  account_.Execute("insert into t_FL_RebateRange (FSchemeID) values (0)");  // of a rate grid
  SchemeRequest request;
  request.ranges = List({});
  ASSERT_TRUE(request.Saves(account_));
  EXPECT_EQ(account_.Rows("select FSchemeID from t_FL_RebateRange"), "0");
  EXPECT_EQ(account_.Rows("select FSchemeNo,FSchemeName,FRebateType,FCheckerID,FNote,FEnable from t_FL_SchemeList"),
            "0|scheme|2041|1001|note|1");
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_AllOrgs"), "0");
}

TEST_F(SchemeSave, PutsAnOrganisationIntoEveryGridRowAndMarksRates) {
  SchemeRequest request;
  request.Organisation(0, 8, 0).Organisation(2, 8, 7).GridRow({71}, "abc").GridRow({72, 71}, 7.25);
  request.grid_rows->Add(ObjectRef());  // a null row counts for the organisation and holds nothing
  ObjectAs<Dictionary>(request.grid_rows->Item(2))->SetValue("FZH", "1");
  ObjectAs<Dictionary>(request.grid_rows->Item(1))->SetValue("FZH", "no number");
  const Variant checks = List({Row({{"FRowID", 2}, {"FItemClassID", 4}, {"FItemID", 72}}),
                               Row({{"FRowID", 2}, {"FItemClassID", 4}, {"FItemID", 71}})});
  ObjectAs<Dictionary>(request.grid_rows->Item(2))->SetValue("FCheckItems", checks);
  ASSERT_TRUE(request.Saves(account_));
  EXPECT_EQ(account_.Rows("select FRowID,FItemClassID,FItemID from t_FL_CheckItems"), "2|4|72\n2|4|71");
  EXPECT_EQ(account_.Rows("select FRowID,FItemClassID,FItemID from t_FL_AllOrgs order by FID"),
            "1|8|0\n2|8|0\n3|8|0\n2|8|7");
  EXPECT_EQ(account_.Rows("select FRowID,FItemID from t_FL_AllItems order by FID"), "1|71\n2|72\n2|71");
  EXPECT_EQ(
      account_.Rows("select FRowID,FItemID,FOrgID,FRebateRate,FIndex,FClassTypeID from t_FL_RebateRule order by FID"),
      "1|1|0|0|1|NULL\n2|2|0|7.25|1|NULL");
}

TEST_F(SchemeSave, TakesCheckPointsFromTheFirstOrganisationOfEveryRow) {
  const struct {
    Long first, second;  // the rows of the organisations, 0 all
    const char* stored;
  } cases[] = {{0, 0, "0|8|71"}, {1, 0, ""}, {0, 1, "0|8|71"}};
  for (const bool with_grid : {true, false}) {
    for (const auto& one : cases) {
      SchemeRequest request;
      request.type = 2042;
      request.Organisation(one.first, 8, 3).Organisation(one.second, 8, 7);
      if (with_grid) request.GridRow({71});
      for (const Long i : {1, 2}) {
        ObjectAs<Dictionary>(request.organisations->Item(i))->SetValue("CheckPoints", Row({{i == 1 ? "71" : "72", 1}}));
      }
      ASSERT_TRUE(request.Saves(account_));
      EXPECT_EQ(account_.Rows("select FRowID,FItemClassID,FItemID from t_FL_CheckItems"), one.stored) << one.first;
      ASSERT_TRUE(BaseInfoMgr().DelSchemeData(account_.dsn(), SchemeIds()));
    }
  }
}

TEST_F(SchemeSave, ReplacesTheStoredSchemeAndEnablesIt) {
  SchemeRequest request;
  request.Organisation(0, 8, 7).GridRow({71});
  ASSERT_TRUE(request.Saves(account_));
  account_.Execute("update t_FL_SchemeList set FEnable=0");
  const Text first = SchemeIds();
  request.replaces = std::stoi(first);
  ASSERT_TRUE(request.Saves(account_));
  EXPECT_NE(SchemeIds(), first);
  EXPECT_EQ(account_.Rows("select FEnable from t_FL_SchemeList"), "1");
  for (const char* table : {"t_FL_AllOrgs", "t_FL_AllItems", "t_FL_RebateRule", "t_FL_RebateRange"}) {
    EXPECT_EQ(account_.Rows("select distinct FSchemeID from " + Text(table)), SchemeIds()) << table;
  }
}

TEST_F(SchemeSave, RefusesAnUnknownRangeItemClass) {
  for (const Long range_item_class : {0, 3}) {
    SchemeRequest request;
    request.range_item_class = range_item_class;
    const Ref<Dictionary> answer = request.Save(account_);
    EXPECT_EQ(answer->Value("OK"), Variant(false));
    EXPECT_EQ(answer->Value("Err"), Variant("错误号：5,RangeItemClass属性无效"));
    EXPECT_FALSE(answer->Has("Repeat"));
  }
}

// What a request can hold that makes bad SQL, or no request at all; nothing is stored, and the next save works.
TEST_F(SchemeSave, ReportsABadRequestAndSavesTheNextOne) {
  const std::pair<std::function<void(SchemeRequest&)>, const char*> cases[] = {
      {[](SchemeRequest& r) {
         r.Organisation(1, 8, 7).organisations->Add(Row({{"FRowID", 1}, {"FItemClassID", 8}}));
       },
       "Element not found: FItemID"},
      {[](SchemeRequest& r) { r.organisations->Add(ObjectRef()); }, "错误号：91,"},
      {[](SchemeRequest& r) { r.ranges->Add(5); }, "错误号：13,"},
      {[](SchemeRequest& r) {
         r.organisations->Add(Row({{"FRowID", 1}, {"FItemClassID", 8}, {"FItemID", "seven"}, {"FShowName", ""}}));
       },
       "seven"},
      {[](SchemeRequest& r) { r.grid_rows = nullptr; }, "错误号：91,"},
      {[](SchemeRequest& r) { r.note = Text(4001, 'x'); }, "truncated"},
  };
  for (const auto& [spoil, reason] : cases) {
    SchemeRequest request;
    spoil(request);
    const Ref<Dictionary> answer = request.Save(account_);
    EXPECT_EQ(answer->Value("OK"), Variant(false)) << reason;
    EXPECT_NE(ToText(answer->Value("Err")).find(reason), Text::npos) << ToText(answer->Value("Err"));
    EXPECT_EQ(SchemeIds(), "");
  }
  EXPECT_TRUE(SchemeRequest().Saves(account_));
}

TEST_F(SchemeSave, KeepsTextsAsTheyCome) {
  Text long_text;
  for (int i = 0; i < 2000; ++i) long_text += "返x";
  for (const Text& text :
       {Text("it's 'quoted'"), Text("  blanks at both ends  "), Text("emoji 😀 and 中文"), long_text}) {
    SchemeRequest request;
    request.name = text;
    request.note = text;
    request.Organisation(0, 8, 7).GridRow({71});
    ObjectAs<Dictionary>(request.organisations->Item(1))->SetValue("FShowName", text);
    const Ref<Vector> goods = ObjectAs<Vector>(ObjectAs<Dictionary>(request.grid_rows->Item(1))->Value("FItemIDs"));
    ObjectAs<Dictionary>(goods->Item(1))->SetValue("FShowName", text);
    ASSERT_TRUE(request.Saves(account_));
    for (const char* query : {"select FSchemeName from t_FL_SchemeList", "select FNote from t_FL_SchemeList",
                              "select FShowName from t_FL_AllOrgs", "select FShowName from t_FL_AllItems"}) {
      EXPECT_EQ(account_.Rows(query), text) << query;
    }
    EXPECT_TRUE(BaseInfoMgr().DelSchemeData(account_.dsn(), SchemeIds()));
  }
}

TEST_F(SchemeSave, LeavesTheOldSchemeWholeWhateverStatementFails) {
  SchemeRequest request;
  request.Organisation(0, 8, 7).Organisation(1, 8, 3).GridRow({71}).GridRow({72});
  ASSERT_TRUE(request.Saves(account_));
  request.replaces = std::stoi(SchemeIds());
  ExpectAllOrNothing(account_, [&] { return request.Saves(account_); });
}

}  // namespace
}  // namespace rebate
