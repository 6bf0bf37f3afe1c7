#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "platform/containers/null_to_default.h"
#include "platform/database/recordset.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

class SchemeBrowsing : public testing::Test {
 protected:
  SchemeBrowsing() { AddMasterData(account_); }

  Long NewestScheme() const { return std::stoi(account_.Rows("select max(FSchemeID) from t_FL_SchemeList")); }

  static Text Keys(const Dictionary& row) {
    Text keys;
    for (Long i = 1; i <= row.Count(); ++i) keys += row.Key(i) + " ";
    return keys;
  }

  static Text Column(const Variant& rows, const char* key) {
    const Ref<Vector> list = ObjectAs<Vector>(rows);
    Text text;
    for (Long i = 1; i <= list->Size(); ++i) text += ToText(ObjectAs<Dictionary>(list->Item(i))->Value(key)) + " ";
    return text;
  }

  TestAccount account_;
  BaseInfoMgr manager_;
};

TEST_F(SchemeBrowsing, LoadsAllPartsOfAGoodsScheme) {
  // All that is stored lies against its order; the goods have two units, and the user is gone by the second time.
  SchemeRequest request;
  request.ranges->Add(Row({{"FLowerLimit", "100"}, {"FUpperLimit", "200"}}));
  request.Organisation(0, 8, 7).Organisation(0, 8, 3).GridRow({72, 71}).GridRow({72});
  ASSERT_TRUE(request.Saves(account_));
  account_.Execute(R"(
    insert into t_ItemUnit (FSrcItemId,FItemID) values (71,1), (71,2)
    insert into t_MeasureUnit (FItemID,FName) values (1,'piece'), (2,'box')
    update t_FL_AllItems set FUnitID=2 where FItemID=71
    update t_FL_SchemeMode set FIndex=10-FIndex
    update t_FL_RebateRange set FIndex=3-FIndex
    delete from t_FL_RebateRule
    insert into t_FL_RebateRule (FSchemeID,FRowID,FIndex) select FSchemeID,2,1 from t_FL_SchemeList
    insert into t_FL_RebateRule (FSchemeID,FRowID,FIndex) select FSchemeID,1,2 from t_FL_SchemeList
    insert into t_FL_RebateRule (FSchemeID,FRowID,FIndex) select FSchemeID,1,1 from t_FL_SchemeList
    insert into t_FL_CheckItems (FSchemeID,FRowID) select FSchemeID,2 from t_FL_SchemeList
    insert into t_FL_CheckItems (FSchemeID,FRowID) select FSchemeID,1 from t_FL_SchemeList)");
  Ref<Dictionary> scheme = Row({{"left over", 1}});
  ASSERT_TRUE(manager_.LoadSchemeRowData(account_.dsn(), NewestScheme(), scheme));
  EXPECT_EQ(Keys(*scheme),
            "SchemeMain SchemeConst AllRanges AllOrgsRS AllOrgs AllRulesRS AllRowIDs AllItemsRS AllChecksRS ");
  EXPECT_EQ(ObjectAs<Dictionary>(scheme->Value("SchemeMain"))->Value("FCheckerName"), Variant("Wang"));
  EXPECT_EQ(Column(scheme->Value("SchemeConst"), "FRebateType"), "2046 2045 2044 2043 2042 2041 2040 ");
  EXPECT_EQ(Column(scheme->Value("AllRanges"), "FUpperLimit"), "200 100 ");
  EXPECT_EQ(Column(scheme->Value("AllRowIDs"), "FRowID"), "1 2 ");
  EXPECT_EQ(Column(scheme->Value("AllOrgs"), "FName"), "Third Seventh ");  // those of the first grid row, by number
  const auto live = [&](const char* part, std::initializer_list<const char*> fields) {
    const Ref<Recordset> rows = ObjectAs<Recordset>(scheme->Value(part));
    Text text;
    for (; !rows->Eof(); rows->MoveNext(), text += " ") {
      for (const char* field : fields) text += ToText(NullToDefault(rows->FieldValue(field), "-"));
    }
    return text;
  };
  // The filter is gone, the cursor on the first row.
  EXPECT_EQ(live("AllOrgsRS", {"FRowID", "FNumber"}), "1S03 1S07 2S03 2S07 ");
  EXPECT_EQ(live("AllRulesRS", {"FRowID", "FIndex"}), "11 12 21 ");
  EXPECT_EQ(live("AllItemsRS", {"FRowID", "FNumber", "FModel", "FUnitName"}), "1G71bigbox 1G72- 2G72- ");
  EXPECT_EQ(live("AllChecksRS", {"FRowID"}), "1 2 ");
  account_.Execute("delete from t_User");
  ASSERT_TRUE(manager_.LoadSchemeRowData(account_.dsn(), NewestScheme(), scheme));
  EXPECT_EQ(ObjectAs<Dictionary>(scheme->Value("SchemeMain"))->Value("FCheckerName"), Variant(""));
}

TEST_F(SchemeBrowsing, LeavesTheOrganisationsOfATotalSchemeToTheRecordset) {
  SchemeRequest request;
  request.type = 2040;
  request.range_item_class = 8;
  ASSERT_TRUE(request.Organisation(1, 8, 7).Saves(account_));
  Ref<Dictionary> scheme;
  ASSERT_TRUE(manager_.LoadSchemeRowData(account_.dsn(), NewestScheme(), scheme));
  EXPECT_FALSE(scheme->Has("AllOrgs"));
  EXPECT_FALSE(ObjectAs<Recordset>(scheme->Value("AllOrgsRS"))->Eof());
  EXPECT_TRUE(ObjectAs<Recordset>(scheme->Value("AllRulesRS"))->Eof());
  EXPECT_EQ(ObjectAs<Vector>(scheme->Value("AllRowIDs"))->Size(), 0);
}

TEST_F(SchemeBrowsing, ListsAllOrganisationsOfASchemeWithoutATypeRow) {
  SchemeRequest request;
  ASSERT_TRUE(request.Organisation(0, 8, 7).GridRow({71}).GridRow({71}).Saves(account_));
  account_.Execute("update t_FL_SchemeList set FRebateType=77");
  Ref<Dictionary> scheme;
  ASSERT_TRUE(manager_.LoadSchemeRowData(account_.dsn(), NewestScheme(), scheme));
  EXPECT_EQ(ObjectAs<Vector>(scheme->Value("SchemeConst"))->Size(), 0);
  EXPECT_EQ(Column(scheme->Value("AllOrgs"), "FRowID"), "1 2 ");
  EXPECT_TRUE(ObjectAs<Recordset>(scheme->Value("AllOrgsRS"))->Eof());
}

TEST_F(SchemeBrowsing, AnswersWithWhatWasThereBeforeAFailure) {
  SchemeRequest request;
  ASSERT_TRUE(request.Saves(account_));  // a goods scheme without organisations has no first row id
  Ref<Dictionary> scheme;
  EXPECT_FALSE(manager_.LoadSchemeRowData(account_.dsn(), NewestScheme(), scheme));
  EXPECT_EQ(Keys(*scheme), "SchemeMain SchemeConst AllRanges AllOrgsRS ");
  ASSERT_TRUE(SchemeRequest().Organisation(0, 8, 7).GridRow({71}).Saves(account_));
  account_.Execute("update t_FL_SchemeMode set FRangeItemClass=null");
  EXPECT_FALSE(manager_.LoadSchemeRowData(account_.dsn(), NewestScheme(), scheme));
  EXPECT_EQ(Keys(*scheme), "SchemeMain SchemeConst AllRanges AllOrgsRS ");
  Trace trace;
  EXPECT_FALSE(manager_.LoadSchemeRowData(account_.dsn(), 999, scheme));
  EXPECT_EQ(scheme->Count(), 0);
  EXPECT_NE(trace.Take().back(), "complete");
}

class SchemeList : public SchemeBrowsing {
 protected:
  void Save(Long type, const Text& name, std::initializer_list<Long> organisations, const Text& note = "") {
    SchemeRequest request;
    request.type = type;
    request.range_item_class = 8;
    request.name = name;
    request.note = note;
    for (const Long organisation : organisations) request.Organisation(1, type < 3000 ? 8 : 1, organisation);
    ASSERT_TRUE(request.Saves(account_)) << name;
    account_.Execute("update t_FL_SchemeList set FModifyDate='2026-01-01' where FSchemeName='" +
                     Replace(name, "'", "''") + "'");
  }

  // The names of the listed schemes.
  Text Names(std::initializer_list<std::pair<const char*, Variant>> filter) {
    Ref<Dictionary> request = Row(filter);
    const Ref<Vector> schemes = manager_.LoadSchemeListData(account_.dsn(), request);
    return schemes ? Column(schemes, "FSchemeName") : "null";
  }
};

TEST_F(SchemeList, FoldsTheOrganisationsOfAScheme) {
  Save(3020, "sales", {0, -1, 17});
  Save(3026, "newer", {17});
  Save(3026, "lost", {18});
  Save(4020, "salesmen", {0});
  account_.Execute(R"(update t_FL_SchemeList set FModifyDate='2026-02-02' where FSchemeName='newer'
    update t_FL_SchemeList set FCheckerID=99 where FSchemeName='lost'
    insert into t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID) select FSchemeID,2,FItemClassID,FItemID from t_FL_AllOrgs)");
  Ref<Dictionary> filter = Row({{"RebateClassType", 40}});
  EXPECT_EQ(Column(manager_.LoadSchemeListData(account_.dsn(), filter), "FOrg"), " ");
  filter = Row({{"RebateClassType", 32}});
  const Ref<Vector> schemes = manager_.LoadSchemeListData(account_.dsn(), filter);
  ASSERT_EQ(schemes->Size(), 2);
  EXPECT_EQ(ObjectAs<Dictionary>(schemes->Item(1))->Value("FOrg"), Variant("C17_Alpha"));
  const Ref<Dictionary> scheme = ObjectAs<Dictionary>(schemes->Item(2));
  EXPECT_EQ(Keys(*scheme),
            "FSchemeID FSchemeName FModifyDate FNote FRebateType FEnable FRebateMode FCheckerID FOrg FOrgDetail ");
  const Text organisations = ToText(scheme->Value("FOrg"));
  EXPECT_TRUE(organisations == "全部客户,往来异常,C17_Alpha" || organisations == "往来异常,全部客户,C17_Alpha")
      << organisations;
  EXPECT_EQ(scheme->Value("FEnable"), Variant("启用"));
  EXPECT_EQ(scheme->Value("FCheckerID"), Variant("Wang"));
  EXPECT_EQ(scheme->Value("FModifyDate"), Variant("2026-01-01"));
  const Ref<Vector> details = ObjectAs<Vector>(scheme->Value("FOrgDetail"));
  ASSERT_EQ(details->Size(), 3);
  const Ref<Dictionary> last = ObjectAs<Dictionary>(details->Item(3));
  EXPECT_EQ(last->Value("FItemID"), Variant(17));
  EXPECT_TRUE(ObjectAs<Dictionary>(details->Item(1))->Value("FNumber").IsNull());
}

TEST_F(SchemeList, FiltersByEveryKey) {
  Save(2040, "first", {7}, "spring");
  Save(2046, "O'Neil", {3}, "autumn");
  Save(3020, "sales", {17});
  Save(2040, "off", {3});
  account_.Execute("update t_FL_SchemeList set FEnable=0 where FSchemeName='off'");
  const Text first_id = account_.Rows("select FSchemeID from t_FL_SchemeList where FSchemeName='first'");
  EXPECT_EQ(Names({{"RebateClassType", 24}}), "first O'Neil ");
  EXPECT_EQ(Names({{"RebateClassType", 32}}), "sales ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"Status", 0}}), "off ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"Status", 2}}), "first O'Neil off ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"SchemeID", first_id}}), "first ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"SchemeName", "o'n"}}), "O'Neil ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"SchemeName", "f_rst"}}), "first ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"Note", "tum"}}), "O'Neil ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"RebateType", 2046}}), "O'Neil ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"BegTxt", "S04"}}), "first ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"BegTxt", "S01"}, {"EndTxt", "S03"}}), "O'Neil ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"BegTxt", "S07"}}), "first ");
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"EndTxt", "S06"}}), "O'Neil ");
  for (const char* none : {"", "abc"}) {
    EXPECT_EQ(Names({{"RebateClassType", 24}, {"Status", none}}), "first O'Neil off ") << none;
  }
  for (const char* key : {"SchemeID", "RebateType"}) {
    EXPECT_EQ(Names({{"RebateClassType", 24}, {key, ""}}), "first O'Neil ") << key;
    EXPECT_EQ(Names({{"RebateClassType", 24}, {key, 0}}), "first O'Neil ") << key;
    EXPECT_EQ(Names({{"RebateClassType", 24}, {key, "abc"}}), "null") << key;
  }
  EXPECT_EQ(Names({{"RebateClassType", 24}, {"SchemeName", "1=1"}}), "");
  EXPECT_EQ(Names({}), "null");
}

TEST_F(SchemeList, SendsTheClausesOnLinesOfTheirOwn) {
  Trace trace;
  Names({{"BegTxt", "A'"},
         {"EndTxt", "B"},
         {"SchemeID", 1},
         {"SchemeName", "n"},
         {"Note", "t"},
         {"RebateType", 2040},
         {"RebateClassType", 24}});
  const Text statement = trace.TakeStatements().at(0);
  EXPECT_NE(
      statement.find(
          "where 1=1\r\n and a.FSchemeID in (SELECT DISTINCT FSchemeID FROM VW_FL_SchemeOrg Where (1=1) And "
          "FNumber >= 'A''' And FNumber <= 'B')\r\n and a.FSchemeID =1\r\n and a.FSchemeName like '%n%'\r\n and "
          "a.FNote like '%t%'\r\n and a.FRebateType =2040\r\n and a.FEnable =1\r\n and b.FRebateClass =24 order by "
          "a.FModifyDate DESC,a.FSchemeID,i.FNumber"),
      Text::npos)
      << statement;
  Ref<Dictionary> none;
  EXPECT_FALSE(manager_.LoadSchemeListData(account_.dsn(), none));
  EXPECT_TRUE(trace.TakeStatements().empty());
}

TEST_F(SchemeList, ShowsASchemeWithoutOrganisations) {
  Save(2040, "bare", {});
  Ref<Dictionary> filter = Row({{"RebateClassType", 24}});
  const Ref<Vector> schemes = manager_.LoadSchemeListData(account_.dsn(), filter);
  EXPECT_EQ(Column(schemes, "FOrg"), "_ ");
  const Ref<Vector> details = ObjectAs<Vector>(ObjectAs<Dictionary>(schemes->Item(1))->Value("FOrgDetail"));
  ASSERT_EQ(details->Size(), 1);
  EXPECT_TRUE(ObjectAs<Dictionary>(details->Item(1))->Value("FItemID").IsNull());
}

}  // namespace
}  // namespace rebate
