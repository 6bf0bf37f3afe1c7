#include "client/form_file.h"
#include "client/json_file.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

class ClientForm : public ToolTest {
 protected:
  static Json ExampleForm() { return ReadJsonFile(Example("form")); }
  Outcome SaveForm(const Json& form) { return Run({"form", "save", File("form.json", JsonLine(form))}); }
  Json Shown(const Text& id) { return RunJson({"form", "show", id}); }
};

TEST_F(ClientForm, WhatIsShownCanBeSavedAgain) {
  const Outcome saved = SaveForm(ExampleForm());
  EXPECT_EQ(saved.out, "Stored 饮料按金额返利 as scheme 1.\n") << saved.err;
  Json form = Shown("1");
  EXPECT_EQ(form["SchemeID"], 1);
  EXPECT_EQ(form["lRebateType"], 2042);
  EXPECT_EQ(form["lRebateMode"], 2);
  EXPECT_EQ(form["sOrg"], "803,806");
  EXPECT_EQ(form["vecSchemeData"].size(), 3u);

  EXPECT_EQ(SaveForm(form).out, "Stored 饮料按金额返利 as scheme 2 in the place of scheme 1, disabled as that was.\n");
  EXPECT_EQ(Run({"form", "show", "1"}).status, 1);
  Json again = Shown("2");
  again["SchemeID"] = 1;
  EXPECT_EQ(again, form);
}

TEST_F(ClientForm, AFormIsShownInSections) {
  SaveForm(ExampleForm());
  const Text shown = Run({"form", "show", "1"}).out;
  for (const char* part :
       {"1  饮料按金额返利", "2042", "803,806", "季度结算", "10000 – 50000", "404,405", "600", "80.5", "406,407"}) {
    EXPECT_TRUE(Holds(shown, part)) << part << " in " << shown;
  }
}

TEST_F(ClientForm, TheFormOfATotalTypeIsByOrganisation) {
  Json form = ExampleForm();
  form["lRebateType"] = 2046;
  form["lRebateMode"] = "7";
  form.erase("sOrg");
  form["vecSchemeData"] = ParseJson(R"([{"FOrgID":"801","FRebateCount":1,"FRebateRate":{"$":"decimal","value":"5.25"}},
                                        {"FOrgID":801,"FRebateCount":2,"FRebateRate":"6"}])");
  EXPECT_EQ(SaveForm(form).status, 0);
  const Json rows = Shown("1")["vecSchemeData"];
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0]["FOrgID"], "801");
  EXPECT_EQ(rows[0]["FRebateRate"], "5.25");
}

TEST_F(ClientForm, RowsOfOneItemStandTogether) {
  Json form = ExampleForm();
  form["vecSchemeData"] = ParseJson(R"([{"FItemID":409,"FRebateCount":2,"FRebateRate":4},
                                        {"FItemID":401,"FRebateCount":2,"FRebateRate":2},
                                        {"FItemID":409,"FRebateCount":1,"FRebateRate":3},
                                        {"FItemID":401,"FRebateCount":1,"FRebateRate":1}])");
  SaveForm(form);
  const Json shown = Shown("1");
  Text rates;
  for (const Json& row : shown["vecSchemeData"]) rates += row["FRebateRate"].get<Text>() + " ";
  EXPECT_EQ(rates, "1 2 3 4 ");
}

TEST_F(ClientForm, AReplacedFormLeavesNothingAndItsStateStays) {
  SaveForm(ExampleForm());
  Run({"enable", "1"});
  Json form = Shown("1");
  form["vecRangeData"].erase(1);
  form["vecSchemeData"] = ParseJson(R"([{"FItemID":"G001 G002","FRebateCount":1,"FRebateRate":"1,000"}])");
  EXPECT_EQ(SaveForm(form).out, "Stored 饮料按金额返利 as scheme 2 in the place of scheme 1, enabled as that was.\n");
  const auto count = [&](const Text& rows) {
    return ParseJson(RunRebate({"sql", dsn_, "select count(*) as n from " + rows, "--json"}).out)["n"].get<int>();
  };
  EXPECT_EQ(count("t_FL_RebateRange"), 1);
  EXPECT_EQ(count("t_FL_RebateRule where FItemID='401,402' and FRebateRate=1000"), 2);
  EXPECT_EQ(count("t_FL_RebateRule"), 2);
  EXPECT_EQ(count("t_ItemSelect where FItemID in (401, 402)"), 4);
  EXPECT_EQ(count("t_ItemSelect"), 4);
  EXPECT_EQ(count("t_FL_AllItems"), 4);
  EXPECT_EQ(Run({"check", "2041", "1", "--item", "405", "--org", "803"}).status, 3);
  EXPECT_EQ(RunJson({"list"})[0]["FOrg"], "S003_杭州清源饮品有限公司,S006_北京华北纸业集团");
  EXPECT_EQ(Run({"show", "2"}).out, Run({"form", "show", "2"}).out);
  EXPECT_EQ(Run({"delete", "2", "--yes"}).status, 0);
  EXPECT_EQ(count("t_ItemSelect") + count("t_FL_AllItems") + count("t_FL_RebateRule"), 0);
}

TEST_F(ClientForm, ATakenNameIsRefused) {
  SaveForm(ExampleForm());
  const Outcome refused = SaveForm(ExampleForm());
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(Holds(refused.err, "SchemeName: another scheme bears the name 饮料按金额返利")) << refused.err;
  EXPECT_EQ(Run({"name-taken", "饮料按金额返利"}).status, 0);
  EXPECT_EQ(Run({"name-taken", "饮料"}).status, 3);
  EXPECT_EQ(Run({"name-taken", "饮料按金额返利"}).out, "Yes, another scheme bears the name 饮料按金额返利.\n");
  EXPECT_EQ(Run({"name-taken", "饮料按金额返利", "--except", "1"}).out,
            "No, no other scheme bears the name 饮料按金额返利.\n");
  EXPECT_EQ(RunJson({"name-taken", "O'Neill"})["taken"], false);
}

TEST_F(ClientForm, CheckTellsWhetherAnotherRuleCovers) {
  SaveForm(ExampleForm());
  const struct {
    std::vector<Text> arguments;
    int status;
    Text told;
  } cases[] = {
      {{"check", "2041", "1", "--item", "405", "--org", "803"}, 0, "Yes, a rule of another scheme covers item 405.\n"},
      {{"check", "2041", "1", "--item", "405", "--org", "801"}, 3, "No rule of another scheme covers item 405.\n"},
      {{"check", "2041", "1", "--item", "405", "--org", "803", "--except", "1"}, 3, "No rule of another scheme"},
      {{"check", "3021", "1", "--item", "G005", "--org", "C003"}, 3, "No rule of another scheme covers item 405.\n"},
      {{"check", "3021", "1", "--item", "405", "--org", "803"}, 1, "There is no customer 803"},
      {{"check", "2040", "6", "--org", "S003"}, 3, "No rule of another scheme covers organisation 803.\n"},
      {{"check", "2040", "6", "--item", "405"}, 2, "--org"},
      {{"check", "2041", "1", "--org", "803"}, 2, "--item"},
      {{"check", "2041", "8", "--item", "405"}, 2, "MODE"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, c.status) << outcome.out << outcome.err;
    EXPECT_TRUE(Holds(outcome.out + outcome.err, c.told)) << outcome.out << outcome.err;
  }
  Sql("insert into t_FL_RebateRule (FSchemeID, FClassTypeID, FItemID, FOrgID) values (9, 2046, '0', 803)");
  EXPECT_EQ(RunJson({"check", "2040", "6", "--org", "803"})["covered"], true);
}

TEST_F(ClientForm, FailuresTellTheirReason) {
  EXPECT_TRUE(Holds(Run({"form", "show", "9"}).err, "Scheme 9 does not exist"));
  EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
  EXPECT_TRUE(Holds(Run({"form", "show", "1"}).err, "Scheme 1 was not saved as a form"));
  EXPECT_EQ(Run({"form"}).status, 2);
  EXPECT_EQ(Run({"form", "save", File("empty.json", "")}).status, 1);
  Sql("drop table t_FL_RebateRule");
  const Outcome failed = SaveForm(ExampleForm());
  EXPECT_EQ(failed.status, 1);
  EXPECT_TRUE(Holds(failed.err, "t_FL_RebateRule")) << failed.err;
}

TEST_F(ClientForm, EachProblemIsNamedWithItsPlace) {
  EXPECT_EQ(FormProblems(ExampleForm()), std::vector<Text>());
  EXPECT_EQ(FormProblems(Json::array()).size(), 1u);
  const struct {
    const char* at;
    const char* value;
    const char* problem;
  } cases[] = {
      {"/SchemeName", "5", "SchemeName is due as a text, not 5"},
      {"/sOrg", "8.5", "sOrg is due as an integer, or a text of integers and commas, not 8.5"},
      {"/vecRangeData", "[]", "vecRangeData is empty"},
      {"/vecRangeData/1/FUpper", "null", "vecRangeData[2].FUpper is due as a number, not null"},
      {"/vecSchemeData", "[]", "vecSchemeData is empty"},
      {"/vecSchemeData/2/FRebateCount", "3", "vecSchemeData[3].FRebateCount is due as the position of a range, 1 to 2"},
      {"/vecSchemeData/0/FItemID", "\"\"", "vecSchemeData[1]: one of FItemID and FOrgID is due"},
      {"/vecSchemeData/0/FRate", "1", "vecSchemeData[1].FRate is unknown"},
  };
  for (const auto& c : cases) {
    Json form = ExampleForm();
    form[Json::json_pointer(c.at)] = ParseJson(c.value);
    const std::vector<Text> problems = FormProblems(form);
    ASSERT_FALSE(problems.empty()) << c.problem;
    EXPECT_EQ(problems[0], c.problem);
  }
}

}  // namespace
}  // namespace rebate
