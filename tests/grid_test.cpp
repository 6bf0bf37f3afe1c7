#include <gtest/gtest.h>

#include <thread>

#include "platform/automation/conversion.h"
#include "platform/login/process_cache.h"
#include "platform/login_standins/host_cache.h"
#include "platform/login_standins/login_standins.h"
#include "service/component_classes.h"
#include "service/rebate_rule_mgr.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

// Runs on a thread of its own, whose rights flag is fresh.
template <typename Work>
void OnNewThread(Work work) {
  std::thread(work).join();
}

class Grid : public testing::Test {
 protected:
  Grid() {
    RegisterLoginStandIns();
    RegisterComponent();
    AddMasterData(account_);
    PutProcessCache(NewProcessCache());
    SetLoginAnswers({});
  }
  ~Grid() override {
    DropProcessCache();
    SetLoginAnswers({});
  }

  static void ApplyRights(const Text& classes, bool needed = true) {
    PutProcessCache(NewProcessCache());
    SetLoginAnswers({.need_authrize = needed, .authrize_item_class_list = classes});
  }

  static Ref<Vector> Bands(std::initializer_list<std::pair<const char*, const char*>> limits) {
    Ref<Vector> rows = List({});
    for (const auto& [lower, upper] : limits) {
      rows->Add(Row({{"FLower", lower}, {"FUpper", upper}, {"FIndex", rows->Size() + 1}}));
    }
    return rows;
  }
  bool SaveBands(Long type, Ref<Vector> bands, Long scheme = 0) {
    return manager_.SaveRebateRange(account_.dsn(), type, bands, scheme);
  }
  bool SaveRules(Long type, Ref<Vector> rows, Long organisation = 0, Long user = 0) {
    return rules_.SaveRebateRule(account_.dsn(), type, rows, organisation, user);
  }
  bool Select(Long type, std::initializer_list<Long> items, Long organisation = 0, Long user = 0) {
    Ref<Dictionary> selection = New<Dictionary>();
    for (const Long item : items) selection->SetValue(std::to_string(selection->Count() + 1), item);
    return manager_.SaveSelectedItem(account_.dsn(), selection, type, user, organisation);
  }
  // The values under a key, each with a blank behind it.
  static Text Column(const Ref<Vector>& rows, const char* key) {
    if (!rows) return "null";
    Text text;
    for (Long i = 1; i <= rows->Size(); ++i) text += ToText(ObjectAs<Dictionary>(rows->Item(i))->Value(key)) + " ";
    return text;
  }

  TestAccount account_;
  BaseInfoMgr manager_;
  RebateRuleMgr rules_;
};

TEST_F(Grid, CarriesRulesAlongWhenRangesAreReplaced) {
  ASSERT_TRUE(SaveBands(2040, Bands({{"0", "100"}, {"100", "200"}, {"200", "300"}})));
  account_.Execute(
      "insert into t_FL_RebateRule (FClassTypeID,FSchemeID,FOrgID,FAmtRangeID,FIndex,FRebateRate) select "
      "FClassTypeID,FSchemeID,7,FID,FIndex,FIndex*10 from t_FL_RebateRange");
  const Text ids = account_.Rows("select FID from t_FL_RebateRange order by FIndex");
  ASSERT_TRUE(SaveBands(2040, Bands({{"0", "100"}, {"200", "300"}, {"300", "400"}})));
  EXPECT_EQ(account_.Rows("select FLowerLimit,FUpperLimit,FIndex,FNote from t_FL_RebateRange order by FIndex"),
            "0|100|1|按供应商采购总金额返采购额的X%\n200|300|2|按供应商采购总金额返采购额的X%\n"
            "300|400|3|按供应商采购总金额返采购额的X%");
  EXPECT_EQ(account_.Rows("select r.FRebateRate,b.FLowerLimit,r.FIndex from t_FL_RebateRule r inner join "
                          "t_FL_RebateRange b on b.FID=r.FAmtRangeID order by r.FID"),
            "10|0|1\n20|200|2\n30|200|2");
  ASSERT_TRUE(SaveBands(2040, Bands({{"0", "100"}})));
  EXPECT_EQ(account_.Rows("select FRebateRate from t_FL_RebateRule order by FID"), "10\n0\n0");
  EXPECT_EQ(account_.Rows("select FID from t_FL_RebateRange"), ids.substr(0, ids.find('\n')));
}

TEST_F(Grid, LeavesRangesOfOtherSchemesAlone) {
  ASSERT_TRUE(SaveBands(2040, Bands({{"0", "1"}, {"1", "2"}}), 55));
  account_.Execute(
      "insert into t_FL_RebateRule (FClassTypeID,FSchemeID,FOrgID,FAmtRangeID,FIndex,FRebateRate) select "
      "FClassTypeID,FSchemeID,7,FID,FIndex,3 from t_FL_RebateRange");
  const Text ranges = account_.Rows("select FID,FSchemeID,FIndex,FFlag from t_FL_RebateRange where FSchemeID=55");
  const auto save_bands = [&] { return SaveBands(2040, Bands({{"5", "9"}, {"0", "1"}})); };
  ASSERT_TRUE(save_bands());
  // Rules of another scheme and of another type on the range of this one, and one of another type at its position.
  for (const char* key : {"2040,55,FID,7", "2041,0,FID,7", "2041,0,999,1"}) {
    account_.Execute("insert into t_FL_RebateRule (FClassTypeID,FSchemeID,FAmtRangeID,FIndex) select " + Text(key) +
                     " from t_FL_RebateRange where FSchemeID=0 and FLowerLimit=5");
  }
  account_.Execute("insert into t_FL_RebateRange (FClassTypeID,FFlag) values (2040,1)");  // it has no scheme either
  const Text rules = account_.Rows("select * from t_FL_RebateRule");
  ASSERT_TRUE(save_bands());
  EXPECT_EQ(account_.Rows("select FID,FSchemeID,FIndex,FFlag from t_FL_RebateRange where FSchemeID=55"), ranges);
  EXPECT_EQ(account_.Rows("select * from t_FL_RebateRule"), rules);
  EXPECT_EQ(Column(manager_.GetRebateRange(account_.dsn(), 2040), "FLowerLimit"), "0 0 1 5 ");
  account_.Execute("delete from t_FL_RebateRange where FSchemeID=0 and FLowerLimit=0");
  EXPECT_EQ(rules_.GetRangeID(account_.dsn(), 2040),
            "," + Replace(account_.Rows("select FID from t_FL_RebateRange order by FLowerLimit"), "\n", ",") + ",");
}

TEST_F(Grid, AnswersForRangesThatAreNotThere) {
  EXPECT_FALSE(manager_.GetRebateRange(account_.dsn(), 2040));
  EXPECT_EQ(rules_.GetRangeID(account_.dsn(), 2040), ",");
  EXPECT_EQ(rules_.GetRebateRangeIndex(account_.dsn(), 1, 2040), 0);
  EXPECT_FALSE(SaveBands(2040, nullptr));
  EXPECT_FALSE(SaveBands(2040, List({})));
  EXPECT_FALSE(SaveBands(2040, List({Row({{"FLower", "1"}, {"FUpper", "x"}})})));
  EXPECT_FALSE(SaveBands(2040, List({ObjectRef()})));
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_RebateRange"), "0");
  ASSERT_TRUE(SaveBands(7777, List({Row({{"FLower", "1"}})})));
  EXPECT_EQ(account_.Rows("select FUpperLimit,FIndex,FNote from t_FL_RebateRange"), "0|0|");
  const Long id = std::stoi(account_.Rows("select FID from t_FL_RebateRange"));
  account_.Execute("update t_FL_RebateRange set FIndex=4");
  EXPECT_EQ(rules_.GetRebateRangeIndex(account_.dsn(), id, 7777), 4);
  EXPECT_EQ(rules_.GetRebateRangeIndex(account_.dsn(), id, 2040), 0);
}

TEST_F(Grid, ListsSelectedAndUnselectedEntities) {
  account_.Execute("update t_Supplier set FNumber='S09' where FItemID=3");
  EXPECT_EQ(Column(manager_.GetItemInfo(2040, 0, account_.dsn(), 5), "FNumber"), "S07 S09 ");
  ASSERT_TRUE(Select(2040, {7}));
  EXPECT_EQ(Column(manager_.GetItemInfo(2040, 1, account_.dsn(), 5), "FNumber"), "S07 ");
  EXPECT_EQ(Column(manager_.GetItemInfo(2040, 0, account_.dsn(), 5), "FNumber"), "S09 ");
  account_.Execute("update t_Supplier set FDeleted=1 where FItemID=3");
  EXPECT_FALSE(manager_.GetItemInfo(2040, 0, account_.dsn(), 1));
  ASSERT_TRUE(Select(2041, {71}, 7));
  ASSERT_TRUE(Select(2041, {71}, 3));
  EXPECT_EQ(Column(manager_.GetItemInfo(2041, 1, account_.dsn(), 1), "FModel"), "big big ");
  EXPECT_EQ(Column(manager_.GetItemInfo(2041, 0, account_.dsn(), 1), "FNumber"), "G72 ");
  for (const Long status : {2, -1}) EXPECT_FALSE(manager_.GetItemInfo(2040, status, account_.dsn(), 1));
  EXPECT_FALSE(manager_.GetItemInfo(2046, 0, account_.dsn(), 1));
}

TEST_F(Grid, SelectingAnOrganisationClearsItsGoodsGrid) {
  ASSERT_TRUE(Select(2041, {71, 72}, 7));
  ASSERT_TRUE(Select(2041, {71}, 3));
  ASSERT_TRUE(SaveRules(2041, List({Row({{"FClassTypeID", 2041}, {"FItemID", "71"}, {"FOrgID", 7}}),
                                    Row({{"FClassTypeID", 2041}, {"FItemID", "71"}, {"FOrgID", 3}})})));
  ASSERT_TRUE(Select(2040, {7}));
  EXPECT_EQ(account_.Rows("select FClassTypeID,FItemID,FOrgID,FStatus from t_ItemSelect order by FClassTypeID"),
            "2040|7|0|1\n2041|71|3|1");
  EXPECT_EQ(account_.Rows("select FOrgID from t_FL_RebateRule"), "3");
  Ref<Dictionary> nothing;
  ASSERT_TRUE(manager_.SaveSelectedItem(account_.dsn(), nothing, 2040, 0, 0));
  EXPECT_EQ(account_.Rows("select count(*) from t_ItemSelect where FClassTypeID=2040"), "0");
  Ref<Dictionary> gap = Row({{"2", 7}});
  EXPECT_FALSE(manager_.SaveSelectedItem(account_.dsn(), gap, 2040, 0, 0));
}

TEST_F(Grid, DropsSelectedEntitiesWithoutRule) {
  ASSERT_TRUE(Select(2040, {3, 7}));
  ASSERT_TRUE(Select(2041, {71, 72}, 3));
  ASSERT_TRUE(Select(2041, {72}, 7));
  ASSERT_TRUE(SaveRules(2041, List({Row({{"FClassTypeID", 2041}, {"FItemID", "72"}, {"FOrgID", 3}})})));
  ASSERT_TRUE(SaveRules(2040, List({Row({{"FClassTypeID", 2040}, {"FItemID", "0"}, {"FOrgID", 7}})})));
  ASSERT_TRUE(manager_.DeleteItemNotInRule(account_.dsn(), 2041, true));
  ASSERT_TRUE(manager_.DeleteItemNotInRule(account_.dsn(), 2040, false));
  EXPECT_EQ(account_.Rows("select FClassTypeID,FItemID,FOrgID from t_ItemSelect order by FClassTypeID"),
            "2040|7|0\n2041|72|3");
}

TEST_F(Grid, SplicesRuleValuesByTheirType) {
  Trace trace;
  ASSERT_TRUE(SaveRules(2041, List({Row({{"FClassTypeID", std::int16_t{2041}},
                                         {"FItemID", "5"},
                                         {"FOrgID", 5},
                                         {"FRebateRate", 1.5},
                                         {"FIndex", 2.0f},
                                         {"FNote", "it's"},
                                         {"FCheckItemID", Variant::Null()},
                                         {"FUnitID", Variant::Decimal("3")}})})));
  EXPECT_EQ(trace.TakeStatements().back(),
            "begin tran Delete from t_FL_RebateRule Where FClassTypeID = 2041\r\nInsert into T_FL_RebateRule("
            "FClassTypeID,FItemID,FOrgID,FRebateRate,FIndex,FNote,FCheckItemID,FUnitID) "
            "Values(2041,'5',5,1.5,'2','it''s','',3)\r\n"
            "Commit tran");
  EXPECT_EQ(account_.Rows("select FItemID,FRebateRate,FIndex,FNote from t_FL_RebateRule"), "5|1.5|2|it's");
  for (const Variant& bad : {Variant(5), Variant(ObjectRef()), Variant(Row({})), Variant(Row({{"FNoSuch", 1}}))}) {
    EXPECT_FALSE(SaveRules(2041, List({bad})));
  }
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_RebateRule"), "1");
  ASSERT_TRUE(SaveRules(2041, nullptr));
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_RebateRule"), "0");
}

TEST_F(Grid, StoresRulesForEverybodyWhoIsNotSelected) {
  ASSERT_TRUE(Select(2040, {7}));
  ASSERT_TRUE(Select(2046, {3}));
  account_.Execute("insert into t_Supplier (FItemID,FDeleted) values (8,1)");
  account_.Execute("insert into t_FL_RebateRule (FClassTypeID,FOrgID) values (2046,7)");
  Long type = 2040;
  Ref<Vector> rows = List({Row({{"FClassTypeID", 2040}, {"FRebateRate", 4}}), Row({})});
  ASSERT_TRUE(rules_.SaveAllRule(account_.dsn(), type, rows));
  EXPECT_EQ(account_.Rows("select FClassTypeID,FOrgID,FRebateRate from t_FL_RebateRule order by FID"),
            "2046|7|NULL\n2040|3|4\nNULL|3|NULL");
  rows = List({Row({{"FOrgID", 1}})});
  EXPECT_FALSE(rules_.SaveAllRule(account_.dsn(), type, rows));
  rows = nullptr;
  ASSERT_TRUE(rules_.SaveAllRule(account_.dsn(), type, rows));
  EXPECT_EQ(account_.Rows("select FClassTypeID,FOrgID from t_FL_RebateRule order by FID"), "2046|7\nNULL|3");
  type = 4020;
  rows = List({Row({{"FClassTypeID", 4020}})});
  ASSERT_TRUE(rules_.SaveAllRule(account_.dsn(), type, rows));
  EXPECT_EQ(account_.Rows("select FOrgID from t_FL_RebateRule where FClassTypeID=4020 order by FOrgID"), "17\n18");
}

TEST_F(Grid, WritesAllOrNothing) {
  ASSERT_TRUE(SaveBands(2040, Bands({{"0", "1"}})));
  ASSERT_TRUE(Select(2041, {71}, 7));
  ASSERT_TRUE(SaveRules(2041, List({Row({{"FClassTypeID", 2041}, {"FOrgID", 7}})})));
  ExpectAllOrNothing(account_, [&] { return SaveBands(2040, Bands({{"1", "2"}})); });
  ExpectAllOrNothing(account_, [&] { return Select(2040, {3, 7}); });
  ExpectAllOrNothing(account_, [&] { return manager_.DeleteItemNotInRule(account_.dsn(), 2040, false); });
  ExpectAllOrNothing(account_, [&] { return SaveRules(2040, List({Row({{"FClassTypeID", 2040}})})); });
}

TEST_F(Grid, ReadsAGridBackALinePerEntityAndRule) {
  EXPECT_FALSE(rules_.GetRebateRule(account_.dsn(), 2040, 0, 1));
  ASSERT_TRUE(Select(2040, {3, 7}));
  ASSERT_TRUE(SaveRules(
      2040,
      List({Row({{"FClassTypeID", 2040}, {"FItemID", "0"}, {"FOrgID", 7}, {"FAmtRangeID", 1}, {"FRebateRate", 5}}),
            Row({{"FClassTypeID", 2040}, {"FItemID", "0"}, {"FOrgID", 7}, {"FAmtRangeID", 2}, {"FRebateRate", 6}}),
            Row({{"FClassTypeID", 2040}, {"FItemID", "71"}, {"FOrgID", 7}, {"FAmtRangeID", 3}})})));
  ApplyRights("8", false);
  // Rules of other types show nowhere.
  account_.Execute(R"(insert into t_FL_RebateRule (FClassTypeID,FItemID,FOrgID,FAmtRangeID) values
    (2046,'0',3,9), (2042,'71',7,9))");
  const Ref<Vector> lines = rules_.GetRebateRule(account_.dsn(), 2040, 0, 5);
  EXPECT_EQ(Column(lines, "FNumber"), "S03 S07 S07 ");
  EXPECT_EQ(Column(lines, "FRebateRate"), " 5 6 ");
  EXPECT_EQ(Column(rules_.GetRebateRule(account_.dsn(), 2040, 71, 1), "FAmtRangeID"), "3 ");
  ASSERT_TRUE(Select(2041, {71, 72}, 7));
  ASSERT_TRUE(SaveRules(
      2041,
      List({Row({{"FClassTypeID", 2041}, {"FItemID", "72"}, {"FOrgID", 7}, {"FAmtRangeID", 4}, {"FRebateRate", 8}})})));
  const Ref<Vector> goods = rules_.GetRebateRule(account_.dsn(), 2041, 7, 1);
  EXPECT_EQ(Column(goods, "FModel") + Column(goods, "FAmtRangeID"), "big   4 ");
  EXPECT_FALSE(rules_.GetRebateRule(account_.dsn(), 2041, 3, 1));
}

TEST_F(Grid, ReadsTheRatesOfOneItemByRange) {
  ASSERT_TRUE(SaveRules(
      2041,
      List({Row(
          {{"FClassTypeID", 2041}, {"FItemID", "72"}, {"FOrgID", 7}, {"FAmtRangeID", 4}, {"FRebateRate", 8.5}})})));
  const Ref<Dictionary> rates = rules_.GetRebateRuleByItem(account_.dsn(), 2041, 7, 1, 72);
  ASSERT_TRUE(rates);
  EXPECT_EQ(rates->Key(1), "4");
  EXPECT_EQ(rates->Value("4"), Variant::Decimal("8.5"));
  EXPECT_FALSE(rules_.GetRebateRuleByItem(account_.dsn(), 2041, 7, 1, 71));
  EXPECT_FALSE(rules_.GetRebateRuleByItem(account_.dsn(), 2041, 3, 1, 72));
  account_.Execute("update t_FL_RebateRule set FAmtRangeID=null");
  EXPECT_FALSE(rules_.GetRebateRuleByItem(account_.dsn(), 2041, 7, 1, 72));
}

// Supplier 3 may be seen by user 12, supplier 7 by user 123; the id 12 is found in both texts.
TEST_F(Grid, KeepsUsersToWhatTheyMaySee) {
  ASSERT_TRUE(Select(2040, {3, 7}));
  ASSERT_TRUE(SaveRules(
      2040, List({Row({{"FClassTypeID", 2040}, {"FOrgID", 3}}), Row({{"FClassTypeID", 2040}, {"FOrgID", 7}})})));
  ApplyRights("8,4");
  OnNewThread([&] {
    BaseInfoMgr manager;
    RebateRuleMgr rules;
    EXPECT_EQ(Column(rules.GetRebateRule(account_.dsn(), 2040, 0, 12), "FNumber"), "S03 S07 ");
    EXPECT_EQ(Column(rules.GetRebateRule(account_.dsn(), 2040, 0, 123), "FNumber"), "S07 ");
    EXPECT_EQ(Column(manager.GetItemInfo(2040, 1, account_.dsn(), 123), "FNumber"), "S07 ");
    EXPECT_FALSE(manager.GetItemInfo(2040, 0, account_.dsn(), 123));
    EXPECT_EQ(Column(manager.GetItemInfo(2041, 0, account_.dsn(), 123), "FNumber"), "G71 G72 ");
    EXPECT_FALSE(rules.GetRebateRuleByItem(account_.dsn(), 2040, 3, 123, 0));
    Ref<Vector> none;
    EXPECT_TRUE(rules.SaveRebateRule(account_.dsn(), 2040, none, 0, 123));
    EXPECT_EQ(account_.Rows("select FOrgID from t_FL_RebateRule"), "3");
    Ref<Dictionary> nothing;
    EXPECT_TRUE(manager.SaveSelectedItem(account_.dsn(), nothing, 2040, 123, 0));
    EXPECT_EQ(account_.Rows("select FItemID from t_ItemSelect"), "3");
    account_.Execute("insert into t_FL_RebateRule (FClassTypeID,FOrgID) values (2041,3)");
    EXPECT_TRUE(rules.SaveRebateRule(account_.dsn(), 2040, none, 3, 123));
    EXPECT_EQ(account_.Rows("select FClassTypeID,FOrgID from t_FL_RebateRule"), "2041|3");
  });
  ApplyRights("1");
  OnNewThread([&] {
    RebateRuleMgr rules;
    EXPECT_EQ(Column(rules.GetRebateRule(account_.dsn(), 2040, 0, 123), "FNumber"), "S03 ");
  });
}

// Writes without a user, of goods and of salesmen's types, and without data rights reach everybody.
TEST_F(Grid, WritesForEverybodyWhereNoRightsApply) {
  const struct {
    bool rights;
    Long type, user;
  } cases[] = {{true, 2040, 0}, {true, 2041, 5}, {true, 4020, 5}, {true, 3021, 5}, {false, 2040, 5}};
  for (const auto& one : cases) {
    ASSERT_TRUE(SaveRules(one.type, List({Row({{"FClassTypeID", one.type}, {"FOrgID", 3}})})));
    ASSERT_TRUE(Select(one.type, {3}));
    ApplyRights("8,1,4", one.rights);
    OnNewThread([&] {
      Ref<Vector> no_rules;
      Ref<Dictionary> nothing;
      EXPECT_TRUE(RebateRuleMgr().SaveRebateRule(account_.dsn(), one.type, no_rules, 0, one.user));
      EXPECT_TRUE(BaseInfoMgr().SaveSelectedItem(account_.dsn(), nothing, one.type, one.user, 0));
    });
    EXPECT_EQ(
        account_.Rows("select count(*) from t_FL_RebateRule") + account_.Rows("select count(*) from t_ItemSelect"),
        "00")
        << one.type << " of user " << one.user;
  }
}

TEST_F(Grid, SalesmenHaveGridsOfTheirOwn) {
  account_.Execute("insert into t_Emp (FItemID,FNumber,FRightUserID) values (17,'E17','12')");
  EXPECT_EQ(Column(manager_.GetItemInfo(4020, 0, account_.dsn(), 1), "FNumber"), "E17 ");
  ASSERT_TRUE(Select(4021, {71}, 17));
  ASSERT_TRUE(Select(4020, {17}));
  EXPECT_EQ(account_.Rows("select FClassTypeID,FItemID from t_ItemSelect"), "4020|17");
  ApplyRights("8,1");
  OnNewThread([&] { EXPECT_EQ(Column(RebateRuleMgr().GetRebateRule(account_.dsn(), 4020, 0, 5), "FNumber"), "E17 "); });
}

}  // namespace
}  // namespace rebate
