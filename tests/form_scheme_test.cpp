#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "platform/values/calendar.h"
#include "service/rebate_rule_mgr.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

// A form in the making: an item scheme of type 2041 with three bands unless told otherwise.
struct Form {
  Long id = 0;
  Text name = "form";
  Long type = 2041;
  Long mode = 1;
  Text organisations = "";
  Text note = "note";
  Ref<Vector> bands = List({Row({{"FLower", "0"}, {"FUpper", "100"}}), Row({{"FLower", "100"}, {"FUpper", "200"}}),
                            Row({{"FLower", "200"}, {"FUpper", "300"}})});
  Ref<Vector> rows = List({});

  Form& Line(const Text& key, Long band, const Text& rate, const Text& check = "") {
    const bool by_total = type == 2040 || type == 2046 || type == 3020 || type == 3026;
    rows->Add(Row({{by_total ? "FOrgID" : "FItemID", key},
                   {"FRebateCount", band},
                   {"FRebateRate", rate},
                   {"FUnitID", "9"},
                   {"FCheckItemID", check}}));
    return *this;
  }
  bool Save(const TestAccount& account) const {
    return BaseInfoMgr().SaveSchemeData(account.dsn(), id, name, type, mode, organisations, bands, rows, note);
  }
};

class FormScheme : public testing::Test {
 protected:
  FormScheme() { AddMasterData(account_); }

  Long NewestScheme() const { return std::stoi(account_.Rows("select max(FID) from t_FL_SchemeList")); }

  struct Seen {
    bool found = false;
    Text name = "as passed";
    Long type = -5;
    Long mode = -6;
    Text organisations = "as passed";
    Ref<Vector> bands;
    Ref<Vector> rows;
    Text note = "as passed";
  };
  Seen View(Long id) {
    Seen seen;
    seen.found = manager_.ViewSchemeData(account_.dsn(), id, seen.name, seen.type, seen.mode, seen.organisations,
                                         seen.bands, seen.rows, seen.note);
    return seen;
  }
  static Text Shown(const Ref<Vector>& rows) {
    if (!rows) return "null";
    Text text;
    for (Long i = 1; i <= rows->Size(); ++i) {
      const Ref<Dictionary> row = ObjectAs<Dictionary>(rows->Item(i));
      for (Long k = 1; k <= row->Count(); ++k) text += ToText(row->Value(row->Key(k))) + "|";
      text += "\n";
    }
    return text;
  }

  TestAccount account_;
  BaseInfoMgr manager_;
};

TEST_F(FormScheme, StoresOneItemInThreeBandsForTwoOrganisations) {
  Form form;
  form.organisations = "7,3";
  ASSERT_TRUE(form.Line("71", 1, "1").Line("71", 2, "2.5").Line("71", 3, "3", "72").Save(account_));
  EXPECT_EQ(account_.Rows("select FSchemeName,FRebateMode,FRebateCor,FRebateType,FNote,FCheckerID,FEnable from "
                          "t_FL_SchemeList"),
            "form|1|7,3|2041|note|1001|0");
  EXPECT_EQ(account_.Rows("select FModifyDate from t_FL_SchemeList"), LocalDate());
  EXPECT_EQ(account_.Rows(
                "select FClassTypeID,FLowerLimit,FUpperLimit,FNote,FIndex,FFlag from t_FL_RebateRange order by FID"),
            "2041|0|100|按商品采购金额返采购额的X%|1|1\n2041|100|200|按商品采购金额返采购额的X%|2|1\n"
            "2041|200|300|按商品采购金额返采购额的X%|3|1");
  EXPECT_EQ(account_.Rows("select FClassTypeID,FItemID,FOrgID from t_ItemSelect order by FOrgID"),
            "2041|71|3\n2041|71|7");
  EXPECT_EQ(account_.Rows("select a.FItemID,a.FOrgID,b.FIndex,a.FRebateRate,a.FIndex,a.FUnitID,a.FCheckItemID from "
                          "t_FL_RebateRule a inner join t_FL_RebateRange b on a.FAmtRangeID=b.FID order by a.FID"),
            "71|7|1|1|1|9|\n71|3|1|1|2|9|\n71|7|2|2.5|3|9|\n71|3|2|2.5|4|9|\n71|7|3|3|5|9|72\n71|3|3|3|6|9|72");
  EXPECT_EQ(account_.Rows("select i.FItemID from t_FL_AllItems i inner join t_FL_RebateRule r on r.FID=i.FRuleTableID"),
            "71\n71\n71\n71\n71\n71");
  EXPECT_EQ(account_.Rows("select count(distinct FRuleTableID) from t_FL_AllItems"), "6");
  EXPECT_EQ(View(NewestScheme()).rows->Size(), 3);
  // A taken name hangs the rows on the scheme that bears it; another form's rows are its own.
  ASSERT_TRUE(form.Save(account_));
  EXPECT_EQ(account_.Rows("select distinct FSchemeID from t_FL_RebateRule"), "1");
  form.name = "other";
  ASSERT_TRUE(form.Save(account_));
  EXPECT_EQ(account_.Rows("select r.FSchemeID,count(*) from t_FL_RebateRule r inner join t_FL_RebateRange b on "
                          "b.FID=r.FAmtRangeID and b.FSchemeID=r.FSchemeID group by r.FSchemeID"),
            "1|6\n3|6");
  EXPECT_EQ(account_.Rows("select FSchemeID,count(*) from t_ItemSelect group by FSchemeID"), "1|2\n3|2");
}

TEST_F(FormScheme, WritesSelectionsByRunsOfOneKey) {
  Form form;
  ASSERT_TRUE(form.Line("5,7", 1, "1").Line("5,7", 2, "2").Line("71", 1, "3").Line("5,7", 3, "4").Save(account_));
  EXPECT_EQ(account_.Rows("select FItemID,FOrgID from t_ItemSelect order by FItemID"), "5|0\n5|0\n7|0\n7|0\n71|0");
  EXPECT_EQ(account_.Rows("select FItemID,FOrgID from t_FL_RebateRule order by FID"), "5,7|0\n5,7|0\n71|0\n5,7|0");
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_AllItems"), "0");
}

TEST_F(FormScheme, StoresATotalTypeByItsOrganisations) {
  for (const Long type : {2040, 2046, 3020, 3026}) {
    SCOPED_TRACE(type);
    Form form;
    form.name = std::to_string(type);
    form.type = type;
    form.mode = 6;
    form.organisations = "nobody's list";
    ASSERT_TRUE(form.Line("7", 1, "1").Line("7", 2, "2").Line("3", 1, "3").Save(account_));
    const Text of_type = " where FClassTypeID=" + form.name;
    EXPECT_EQ(account_.Rows("select FItemID,FOrgID from t_ItemSelect" + of_type + " order by FOrgID"), "0|3\n0|7");
    EXPECT_EQ(
        account_.Rows("select FItemID,FOrgID,FIndex,FCheckItemID from t_FL_RebateRule" + of_type + " order by FID"),
        "0|7|1|NULL\n0|7|2|NULL\n0|3|3|NULL");
    const Seen seen = View(NewestScheme());
    ASSERT_TRUE(seen.found);
    const Text rows = Shown(seen.rows);  // a distinct query has no order of its own
    EXPECT_EQ(seen.rows->Size(), 3);
    for (const char* row : {"0|3|3|1|9||\n", "0|7|1|1|9||\n", "0|7|2|2|9||\n"}) EXPECT_NE(rows.find(row), Text::npos);
  }
}

TEST_F(FormScheme, ComesBackInTheShapeInWhichItIsSaved) {
  Form form;
  form.name = "it's";
  form.note = "a 'note'";
  form.bands = List({form.bands->Item(3), form.bands->Item(1), form.bands->Item(2)});
  ASSERT_TRUE(form.Line("71", 1, "1", "c'1").Line("72,71", 3, "2").Save(account_));
  const Seen seen = View(NewestScheme());
  ASSERT_TRUE(seen.found);
  EXPECT_EQ(seen.name, "it's");
  EXPECT_EQ(seen.type, 2041);
  EXPECT_EQ(seen.mode, -6);
  EXPECT_EQ(seen.organisations, "");
  EXPECT_EQ(seen.note, "a 'note'");
  EXPECT_EQ(Shown(seen.bands), "200|300|\n0|100|\n100|200|\n");
  EXPECT_EQ(Shown(seen.rows), "71|0|1|1|9|c'1|\n72,71|0|2|3|9||\n");
  form.bands = seen.bands;
  form.rows = seen.rows;
  form.id = NewestScheme();
  ASSERT_TRUE(form.Save(account_));
  const Seen again = View(NewestScheme());
  EXPECT_EQ(Shown(again.bands), Shown(seen.bands));
  EXPECT_EQ(Shown(again.rows), Shown(seen.rows));
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_SchemeList"), "1");
}

TEST_F(FormScheme, LeavesWhatItHadReadBeforeARowIsMissing) {
  Seen seen = View(99);
  EXPECT_FALSE(seen.found);
  EXPECT_EQ(seen.name + seen.organisations + seen.note, "as passedas passedas passed");
  SchemeRequest request;
  ASSERT_TRUE(request.Organisation(0, 8, 7).GridRow({71}).Saves(account_));
  seen = View(NewestScheme());  // its rules carry no class type
  EXPECT_FALSE(seen.found);
  EXPECT_EQ(seen.name, "scheme");
  EXPECT_EQ(Shown(seen.bands), "0|100|\n");
  EXPECT_EQ(Shown(seen.rows), "null");
}

TEST_F(FormScheme, RefusesAFormThatIsNotWhole) {
  Form form;
  ASSERT_TRUE(form.Line("71", 1, "1").Save(account_));
  const Text before = account_.Everything();
  form.id = NewestScheme();
  const std::function<void(Form&)> spoilers[] = {
      [](Form& f) { f.bands = nullptr; },          [](Form& f) { f.rows = List({}); },
      [](Form& f) { f.Line("71", 9, "1"); },       [](Form& f) { f.rows->Add(Row({{"FItemID", "71"}})); },
      [](Form& f) { f.Line("71", 1, "no rate"); },
  };
  for (const auto& spoil : spoilers) {
    Form spoiled = form;
    spoiled.rows = List({form.rows->Item(1)});
    spoil(spoiled);
    EXPECT_FALSE(spoiled.Save(account_));
    EXPECT_EQ(account_.Everything(), before);
  }
  ExpectAllOrNothing(account_, [&] { return form.Save(account_); });
}

TEST_F(FormScheme, LivesOnAsAScheme) {
  Form form;
  ASSERT_TRUE(form.Line("71", 1, "1").Save(account_));
  const Long id = NewestScheme();
  Ref<Dictionary> filter = Row({{"RebateClassType", 24}, {"Status", 0}});
  EXPECT_EQ(manager_.LoadSchemeListData(account_.dsn(), filter)->Size(), 1);
  EXPECT_TRUE(RebateRuleMgr().GetForbidSchemeList(account_.dsn(), 24));
  EXPECT_TRUE(manager_.EnableScheme(account_.dsn(), id, true));
  EXPECT_TRUE(manager_.EnableScheme(account_.dsn(), id, false));
  EXPECT_TRUE(manager_.DelSchemeData(account_.dsn(), std::to_string(id)));
  EXPECT_EQ(account_.Rows("select count(*) from t_FL_RebateRule"), "0");
  EXPECT_EQ(account_.Rows("select count(*) from t_ItemSelect"), "1");
}

TEST_F(FormScheme, KnowsWhichNamesAreTaken) {
  Form form;
  form.name = "it's";
  ASSERT_TRUE(form.Line("71", 1, "1").Save(account_));
  const Long id = NewestScheme();
  EXPECT_TRUE(manager_.ExistsSchemeName(account_.dsn(), 0, "it's"));
  EXPECT_FALSE(manager_.ExistsSchemeName(account_.dsn(), id, "it's"));
  EXPECT_FALSE(manager_.ExistsSchemeName(account_.dsn(), 0, "other"));
}

TEST_F(FormScheme, FindsRulesThatAlreadyCoverAnItemOrAnOrganisation) {
  account_.Execute(R"(insert into t_FL_RebateRule (FSchemeID,FClassTypeID,FItemID,FOrgID) values
    (1,2041,'5,7',0), (1,2041,'15,25',3), (2,2040,'0',7), (2,3020,'0',17), (3,9999,'88',0), (4,null,'99',0),
    (5,3025,'66',0), (5,2046,'0',9), (5,3026,'0',19), (5,2040,'5',11))");
  struct {
    Long scheme, type, mode, organisation;
    const char* item;
    bool found;
  } const cases[] = {
      {0, 2041, 1, 1, "5", true},    {1, 2041, 1, 1, "5", false},   {0, 2041, 1, 1, "25", false},
      {0, 2041, 1, 3, "25", true},   {0, 2041, 1, 1, "5,7", true},  {0, 2041, 1, 1, "7,5", false},
      {0, 3021, 1, 1, "5", false},   {0, 2040, 6, 0, "7", true},    {0, 2040, 6, 0, "3", false},
      {0, 3020, 7, 0, "17", true},   {0, 3020, 7, 0, "7", false},   {0, 5000, 2, 0, "88", true},
      {0, 2041, 2, 0, "88", false},  {0, 5000, 2, 0, "99", true},   {0, 2041, 0, 0, "none", true},
      {0, 2041, 8, 0, "none", true}, {0, 2041, 1, 0, "a'b", false}, {0, 2041, 5, 0, "none", false},
      {0, 3021, 1, 0, "66", true},   {0, 2040, 6, 0, "9", true},    {0, 3020, 6, 0, "19", true},
      {0, 2046, 6, 0, "17", false},  {0, 3026, 6, 0, "7", false},   {0, 2040, 6, 0, "11", false},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(manager_.CheckSchemeData(account_.dsn(), one.scheme, one.type, one.mode, one.organisation, one.item),
              one.found)
        << one.item << " of type " << one.type << " in mode " << one.mode;
  }
}

}  // namespace
}  // namespace rebate
