#include "client/json_file.h"
#include "client/request_check.h"
#include "platform/files/files.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// A mistake in a file that is otherwise right: what stands at a place, null where the key is taken away, and what is
// said to it.
struct Mistake {
  const char* file;
  const char* at;
  const char* value;
  const char* said;
};

// Stored schemes: 1 by goods, 2 a form.
class ClientFileMistakes : public ToolTest {
 protected:
  ClientFileMistakes() {
    EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
    EXPECT_EQ(Run({"form", "save", Example("form")}).status, 0);
    EXPECT_EQ(Run({"ranges", "2040", "--set", Example("ranges")}).status, 0);
    EXPECT_EQ(Run({"select", "2040", "S003", "S004"}).status, 0);
  }

  // A right file of its kind that stores something new.
  static Json RightFile(const Text& file) {
    if (file == "form") {
      Json form = ReadJsonFile(Example("form"));
      form["SchemeName"] = "新";
      return form;
    }
    if (file == "ranges" || file == "rates") return ReadJsonFile(Example(file));
    Json request = ReadJsonFile(Example(file == "goods" ? "supplier_goods" : "supplier_total"));
    request["SchemeMainData"]["FSchemeName"] = "新";
    if (file == "goods") request["AllOrgsData"][0]["FItemID"] = "S002";
    return request;
  }

  std::vector<Text> Verb(const Text& file, const Text& path) const {
    if (file == "form") return {"form", "save", path};
    if (file == "ranges" || file == "rates") return {file, "2040", "--set", path};
    return {"save", path};
  }

  Outcome Make(const Mistake& mistake, bool strict) {
    Json file = RightFile(mistake.file);
    const Json::json_pointer at(mistake.at);
    if (mistake.value != nullptr) {
      file[at] = ParseJson(mistake.value);
    } else {
      file[at.parent_pointer()].erase(at.back());
    }
    std::vector<Text> verb = Verb(mistake.file, File("mistake.json", JsonLine(file)));
    if (strict) verb.push_back("--strict");
    return Run(verb);
  }

  Text Stored() {
    Text all;
    for (const char* table :
         {"t_FL_SchemeList", "t_FL_RebateRange", "t_FL_RebateRule", "t_FL_AllOrgs", "t_FL_AllItems"}) {
      all += RunRebate({"sql", dsn_, Text("select * from ") + table, "--json"}).out;
    }
    return all;
  }
};

const Mistake kImpossible[] = {
    {"goods", "/FRebateType", "9999", "FRebateType: the account offers no rebate type 9999"},
    {"goods", "/SchemeMainData/FSchemeName", "\" \"", "SchemeMainData.FSchemeName: the name is empty"},
    {"goods", "/SchemeMainData/FSchemeID", "99", "SchemeMainData.FSchemeID: there is no scheme 99 to replace"},
    {"goods", "/SchemeMainData/FSchemeID", "-1", "SchemeMainData.FSchemeID: there is no scheme -1 to replace"},
    {"goods", "/SchemeMainData/FSchemeID", "2", "(饮料按金额返利) was saved as a form"},
    {"goods", "/AllRangesData", "[]", "AllRangesData: there is no range"},
    {"goods", "/AllRangesData/1/FLowerLimit", "10000", "AllRangesData[2].FLowerLimit: 10000 lies inside of"},
    {"goods", "/AllRangesData/1/FUpperLimit", "20000", "AllRangesData[2].FUpperLimit: the range ends at 20000"},
    {"goods", "/AllRangesData/0/FLowerLimit", "-5", "AllRangesData[1].FLowerLimit: an amount below zero"},
    {"goods", "/AllRangesData/0/FUpperLimit", "\"1,5\"", "AllRangesData[1].FUpperLimit is due as a number, commas"},
    {"goods", "/AllRangesData/0/FUpperLimit", "\"20,00\"", "commas between thousands alone"},
    {"goods", "/AllRangesData/0/FUpperLimit", "\"1e5\"", "AllRangesData[1].FUpperLimit is due as a number, not"},
    {"goods", "/AllRangesData/0/FUpperLimit", "\"20000元\"", "AllRangesData[1].FUpperLimit is due as a number, not"},
    {"goods", "/AllRangesData/0/FUpperLimit", "1234567890123456", "a number of at most 15 digits"},
    {"goods", "/AllRangesData/0/FUpperLimit", "1e300", "a number of at most 15 digits"},
    {"goods", "/AllRangesData/0/FUpperLimit", R"({"$":"decimal","value":"1,5"})", "commas between thousands alone"},
    {"goods", "/AllOrgsData", "[]", "AllOrgsData: there is no organisation"},
    {"goods", "/AllOrgsData/0/FItemID", "899", "AllOrgsData[1].FItemID: there is no supplier 899"},
    {"goods", "/AllOrgsData/0/FItemID", "\"S099\"", "AllOrgsData[1].FItemID: there is no supplier S099"},
    {"goods", "/AllOrgsData/0/FItemClassID", "1", "organisations of type 2041 are of class 8, not 1"},
    {"goods", "/AllOrgsData/0/FRowID", "3", "AllOrgsData[1].FRowID: there is no grid row 3"},
    {"goods", "/AllOrgsData/0/FRowID", "1", "AllGridRows[2]: no organisation stands in the row"},
    {"goods", "/AllOrgsData/1", R"({"FRowID":1,"FItemClassID":8,"FItemID":802,"FShowName":""})",
     "AllOrgsData[2].FItemID: organisation 802 stands in the row twice"},
    {"total", "/AllOrgsData/0/CheckPoints", R"({"401":null})", "AllOrgsData[1].CheckPoints: they are stored of"},
    {"goods", "/AllGridRows", "[]", "AllOrgsData[1].FRowID: there is no grid row, so that nothing would be stored"},
    {"goods", "/AllGridRows/0/FItemIDs/0/FItemID", "499",
     "AllGridRows[1].FItemIDs[1].FItemID: there is no goods item 499"},
    {"goods", "/AllGridRows/0/FItemIDs/0/FItemID", "402",
     "FItemIDs[2].FItemID: goods item 402 stands in the row twice"},
    {"goods", "/AllGridRows/0/FItemIDs/0/FUnitID", "77", "FItemIDs[1].FUnitID: there is no unit 77"},
    {"goods", "/AllGridRows/0/FItemIDs/0/FUnitID", "\"BTL\"", "goods item 401 isn't counted in unit BTL"},
    {"goods", "/AllGridRows/0/FItemIDs/0/FRowID", "2", "FItemIDs[1].FRowID: the grid row stands at position 1, not 2"},
    {"goods", "/AllGridRows/0/FItemIDs", "[]", "AllGridRows[1].FItemIDs: there are no goods in the row"},
    {"goods", "/AllGridRows/0/FCheckItems", R"([{"FRowID":1,"FItemClassID":77,"FItemID":1}])",
     "there is no item class 77"},
    {"goods", "/AllGridRows/0/FRebateRates/0/FRebateRate", "150", "150 per cent is more than the whole amount"},
    {"goods", "/AllGridRows/0/FRebateRates/0/FRebateRate", "-5", "FRebateRates[1].FRebateRate: a rate below zero"},
    {"goods", "/AllGridRows/0/FRebateRates/0/FIndex", "2",
     "FRebateRates[2].FIndex: a second rate of the row in range 2"},
    {"goods", "/AllGridRows/0/FRebateRates/0/FIndex", "3",
     "FRebateRates[1].FIndex: there is no range 3; the file has 2"},
    {"total", "/AllGridRows/0/FItemIDs", R"([{"FRowID":1,"FItemID":401,"FUnitID":1,"FShowName":""}])",
     "type 2040 goes by organisations alone, without goods"},
    {"form", "/SchemeID", "99", "SchemeID: there is no form 99 to replace"},
    {"form", "/SchemeID", "1", "(洗护商品采购返利) was not saved as a form"},
    {"form", "/SchemeName", "\"\"", "SchemeName: the name is empty"},
    {"form", "/lRebateType", "9999", "lRebateType: the account offers no rebate type 9999"},
    {"form", "/lRebateMode", "6", "lRebateMode: type 2042 goes by goods: mode 1 to 5, not 6"},
    {"form", "/sOrg", "\"803,899\"", "sOrg: there is no supplier 899"},
    {"form", "/sOrg", "\"803 803\"", "sOrg: 803 stands there twice"},
    {"form", "/vecRangeData/1/FLower", "\"9,000\"", "vecRangeData[2].FLower: 9000 lies inside of vecRangeData[1]"},
    {"form", "/vecSchemeData/0/FItemID", "\"404,499\"", "vecSchemeData[1].FItemID: there is no goods item 499"},
    {"form", "/vecSchemeData/0/FRebateCount", "2", "vecSchemeData[2].FRebateCount: a second rate of goods 404,405"},
    {"form", "/vecSchemeData/0/FOrgID", "803", "vecSchemeData[1].FOrgID: in types by goods sOrg names"},
    {"form", "/vecSchemeData/0/FUnitID", "\"PCS\"", "goods item 404 isn't counted in unit PCS"},
    {"ranges", "/0/FUpper", "60000", "ranges[2].FLower: 50000 lies inside of ranges[1], which ends at 60000"},
    {"ranges", "/0/FIndex", "2", "ranges[2].FIndex: a second range at position 2"},
    {"ranges", "/0/FIndex", "0", "ranges[1].FIndex: positions are counted from 1"},
    {"rates", "/0/FOrgID", "899", "rows[1].FOrgID: there is no supplier 899"},
    {"rates", "/0/FOrgID", nullptr, "rows[1].FOrgID: it is due"},
    {"rates", "/0/FIndex", nullptr, "rows[1]: one of FIndex and FAmtRangeID is due"},
    {"rates", "/0/FIndex", "2", "rows[2]: a second rate of organisation 803 in the range"},
    {"rates", "/0/FRebateRate", "101", "rows[1].FRebateRate: 101 per cent"},
    {"rates", "/0/FItemID", "401", "rows[1].FItemID: type 2040 holds no goods"},
    {"rates", "/0/FSchemeID", "1", "rows[1].FSchemeID: it is due as 0, not 1"},
    {"rates", "/0/FClassTypeID", "2041", "rows[1].FClassTypeID: it is due as 2040, not 2041"},
};

const Mistake kOdd[] = {
    {"goods", "/SchemeMainData/FSchemeName", "\"洗护商品采购返利\"", "another scheme bears the name, too"},
    {"goods", "/AllRangesData/1/FLowerLimit", "25000", "no range holds the amounts from 20000 to 25000"},
    {"goods", "/AllRangesData/0", R"({"FLowerLimit":100000,"FUpperLimit":"200,000"})",
     "don't stand in ascending order"},
    {"goods", "/AllOrgsData/0/FItemID", "\"S008\"", "AllOrgsData[1].FItemID: supplier S008 is out of use"},
    {"goods", "/AllGridRows/1/FItemIDs/0/FItemID", "401", "goods item 401 stands in row 1, too"},
    {"goods", "/AllGridRows/0/FRebateRates", R"([{"FRowID":1,"FRebateRate":2,"FIndex":1}])",
     "AllGridRows[1].FRebateRates: no rate in range 2"},
    {"form", "/vecSchemeData/0/FItemID", "401", "no rate in range"},
    {"rates", "/0/FOrgID", "\"S001\"", "rows[1].FOrgID: supplier 801 isn't selected"},
};

TEST_F(ClientFileMistakes, WhatCannotBeRightIsRefusedWithItsPlace) {
  const Text before = Stored();
  for (const Mistake& mistake : kImpossible) {
    const Outcome refused = Make(mistake, false);
    EXPECT_EQ(refused.status, 1) << mistake.said << '\n' << refused.out;
    EXPECT_TRUE(Holds(refused.err, mistake.said)) << mistake.said << '\n' << refused.err;
    EXPECT_TRUE(Holds(refused.err, "mistake.json: ")) << refused.err;
    EXPECT_EQ(refused.out, "") << mistake.said;
  }
  EXPECT_EQ(Stored(), before);
}

TEST_F(ClientFileMistakes, WhatIsOddIsToldAndRefusedOnRequest) {
  for (const Mistake& mistake : kOdd) {
    const Text before = Stored();
    const Outcome strict = Make(mistake, true);
    EXPECT_EQ(strict.status, 1) << mistake.said;
    EXPECT_TRUE(Holds(strict.err, mistake.said)) << mistake.said << '\n' << strict.err;
    EXPECT_EQ(Stored(), before) << mistake.said;
  }
}

TEST_F(ClientFileMistakes, WhatIsOddIsStored) {
  const Outcome stored = Make({"goods", "/AllOrgsData/0/FItemID", "\"S008\"", ""}, false);
  EXPECT_EQ(stored.status, 0) << stored.err;
  EXPECT_TRUE(Holds(stored.err, "note: AllOrgsData[1].FItemID")) << stored.err;
  EXPECT_EQ(stored.out, "Stored 新 as scheme 3.\n");
}

TEST_F(ClientFileMistakes, AmountsAreReadAsTheyAreMeant) {
  Json request = RightFile("total");
  request["AllRangesData"] = ParseJson(R"([{"FLowerLimit":"0","FUpperLimit":"100,000"},
      {"FLowerLimit":{"$":"decimal","value":"100,000.00"},"FUpperLimit":9999999999}])");
  request["AllGridRows"][0]["FRebateRates"][0]["FRebateRate"] = " +1.50 ";
  const Outcome stored = Run({"save", File("amounts.json", JsonLine(request))});
  ASSERT_EQ(stored.status, 0) << stored.err;
  const Json shown = RunJson({"show", "3"});
  EXPECT_EQ(shown["AllRangesData"].dump(),
            R"([{"FLowerLimit":0,"FUpperLimit":100000},{"FLowerLimit":100000,"FUpperLimit":9999999999}])");
  EXPECT_EQ(shown["AllGridRows"][0]["FRebateRates"][0]["FRebateRate"], 1.5);
}

TEST_F(ClientFileMistakes, AShownSchemeIsSavedAgainAsItWas) {
  Json request = RightFile("goods");
  request["AllOrgsData"] =
      ParseJson(R"([{"FRowID":0,"FItemClassID":8,"FItemID":"S002","FShowName":"甲","CheckPoints":{"805":null}},
                                         {"FRowID":2,"FItemClassID":8,"FItemID":804,"FShowName":"乙"}])");
  request["AllGridRows"][1]["FCheckItems"] = ParseJson(R"([{"FRowID":2,"FItemClassID":4,"FItemID":"G005"}])");
  ASSERT_EQ(Run({"save", File("first.json", JsonLine(request))}).status, 0);
  Json shown = RunJson({"show", "3"});
  EXPECT_EQ(shown["AllOrgsData"].size(), 2u);
  const Outcome again = Run({"save", File("again.json", JsonLine(shown)), "--strict", "--json"});
  EXPECT_EQ(ParseJson(again.out)["SchemeID"], 4) << again.err;
  shown["SchemeMainData"]["FSchemeID"] = 4;
  EXPECT_EQ(RunJson({"show", "4"}), shown);
}

TEST_F(ClientFileMistakes, EveryKeyOfARequestIsExplained) {
  const auto explained = [](const auto& self, std::span<const KeyRule> rules) -> void {
    for (const KeyRule& rule : rules) {
      EXPECT_FALSE(rule.about.empty()) << rule.key;
      self(self, rule.keys);
    }
  };
  explained(explained, RequestKeys());
  for (const std::vector<Text>& verb :
       std::vector<std::vector<Text>>{{"save"}, {"form", "save"}, {"ranges"}, {"rates"}}) {
    std::vector<Text> arguments = verb;
    arguments.push_back("--keys");
    const Outcome keys = RunRebate(arguments);
    EXPECT_EQ(keys.status, 0) << keys.err;
    EXPECT_TRUE(Holds(keys.out, "What it says")) << keys.out;
  }
}

TEST(ClientFirstDay, AnAccountWithoutASampleListsWhatItStores) {
  const TestAccount folder;
  const Text dsn = folder.File("own.db");
  ASSERT_EQ(RunRebate({"init", dsn}).status, 0);
  const std::optional<Text> suppliers = files::ReadWhole(REBATE_SOURCE_DIR "/examples/first_suppliers.sql");
  const Outcome supplied = RunRebate({"sql", dsn}, suppliers.value());
  ASSERT_EQ(supplied.status, 0) << supplied.err;
  const Outcome saved = RunRebate({"save", Example("supplier_total"), "--dsn", dsn});
  EXPECT_EQ(saved.status, 0) << saved.err;
  EXPECT_EQ(saved.err, "The account had no user: made user 1, Administrator.\n");
  EXPECT_TRUE(Holds(RunRebate({"list", "--dsn", dsn}).out, "2026年度供应商总额返利"));

  const Text stranger = "Data Source=" + dsn + ";AppUser=77";
  Json request = ReadJsonFile(Example("supplier_total"));
  request["SchemeMainData"]["FSchemeID"] = 1;
  std::ofstream(files::ToPath(folder.File("s.json"))) << JsonLine(request);
  const Outcome strange = RunRebate({"save", folder.File("s.json"), "--dsn", stranger});
  EXPECT_EQ(strange.status, 0);
  EXPECT_TRUE(Holds(strange.err, "t_User holds no user 77")) << strange.err;
  EXPECT_EQ(RunRebate({"list", "--dsn", dsn}).err, "Not listed: 1 scheme of user 77, for whom t_User has no row.\n");
}

}  // namespace
}  // namespace rebate
