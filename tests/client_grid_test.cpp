#include "client/json_file.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// A grid of suppliers 803 and 804 with the example's ranges and rates.
class ClientGrid : public ToolTest {
 protected:
  ClientGrid() {
    EXPECT_EQ(Run({"ranges", "2040", "--set", Example("ranges")}).out, "Type 2040 now has 2 ranges.\n");
    EXPECT_EQ(Run({"select", "2040", "803", "804"}).out, "The selection of type 2040 now is 803 804.\n");
    EXPECT_EQ(Run({"rates", "2040", "--set", Example("rates")}).out, "Stored 3 rates of type 2040.\n");
  }

  Outcome SetRates(const Text& rows, std::vector<Text> more = {}) {
    more.insert(more.begin(), {"rates", "2040", "--set", File("rates.json", rows)});
    return Run(more);
  }
  // The lines of a printed table behind its rule, blanks squeezed.
  Text Lines(const std::vector<Text>& verb) {
    std::istringstream table(Run(verb).out);
    Text lines;
    bool behind_rule = false;
    for (Text line; std::getline(table, line);) {
      if (!std::exchange(behind_rule, behind_rule || line.find("---") != Text::npos)) continue;
      std::istringstream words(line);
      for (Text word; words >> word;) lines += word + " ";
      lines += "\n";
    }
    return lines;
  }
};

TEST_F(ClientGrid, IsPrintedAsAGrid) {
  EXPECT_EQ(Run({"rates", "2040"}).out,
            "Rates in %\n\n"
            " ID  Number  Name                  0 – 50000  50000 – 200000\n"
            "---  ------  --------------------  ---------  --------------\n"
            "803  S003    杭州清源饮品有限公司        0.5            1.25\n"
            "804  S004    青岛海岸食品有限公司                       2\n");
  EXPECT_EQ(RunJson({"rates", "2040"}).size(), 3u);
  EXPECT_EQ(RunJson({"rates", "3020"}), Json::array());
  EXPECT_EQ(Run({"rates", "3020"}).status, 0);
}

TEST_F(ClientGrid, RatesFollowTheirRangesAndLostOnesStandApart) {
  const Text ranges = R"([{"FLower":"0","FUpper":50000,"FIndex":2},{"FLower":50000,"FUpper":"70000.5","FIndex":1}])";
  EXPECT_EQ(Run({"ranges", "2040", "--set", File("ranges.json", ranges)}).status, 0);
  EXPECT_EQ(Lines({"ranges", "2040"}), "1 0 50000 \n3 50000 70000.5 \n");
  Sql("insert into t_FL_RebateRule (FClassTypeID, FOrgID, FAmtRangeID, FRebateRate) values (2040, 804, 77, 9)");
  Sql("insert into t_FL_RebateRule (FClassTypeID, FOrgID, FRebateRate) values (2040, 804, 8)");
  const Text grid = Run({"rates", "2040"}).out;
  EXPECT_TRUE(Holds(grid, "50000 – 70000.5        ?\n")) << grid;
  EXPECT_TRUE(Holds(grid, "0, 9, 8\n")) << grid;
}

// The rates by range behind each change, as "from-to:rates".
TEST_F(ClientGrid, RatesStayWithTheirRangesAsTheseChange) {
  const char* const kBands = R"([{"FLower":0,"FUpper":100},{"FLower":100,"FUpper":200},{"FLower":200,"FUpper":300}])";
  const struct {
    const char* ranges;
    const char* told;
    const char* rates;
  } cases[] = {
      {R"([{"FLower":100,"FUpper":200},{"FLower":200,"FUpper":300}])", "1 rate has lost its range and is 0 now.\n",
       "100-200:2 200-300:3 lost:0 "},
      {R"([{"FLower":0,"FUpper":50},{"FLower":50,"FUpper":100},{"FLower":100,"FUpper":200},{"FLower":200,"FUpper":300}])",
       "The rates of 0 – 100 now stand in 0 – 50.\n", "0-50:1 100-200:2 200-300:3 "},
      {R"([{"FLower":0,"FUpper":100},{"FLower":200,"FUpper":300},{"FLower":300,"FUpper":"1,000"}])", "1 rate has lost",
       "0-100:1 200-300:3 lost:0 "},
      {R"([{"FLower":0,"FUpper":100,"FIndex":3},{"FLower":100,"FUpper":200,"FIndex":2},
           {"FLower":200,"FUpper":300,"FIndex":1}])",
       "", "0-100:1 100-200:2 200-300:3 "},
      {R"([{"FLower":0,"FUpper":1000}])", "2 rates have lost their range and are 0 now.\n", "0-1000:1 lost:0 lost:0 "},
  };
  for (const auto& c : cases) {
    Sql("delete from t_FL_RebateRange delete from t_FL_RebateRule");
    ASSERT_EQ(Run({"ranges", "2040", "--set", File("bands.json", kBands)}).status, 0);
    ASSERT_EQ(SetRates(R"([{"FOrgID":"S003","FIndex":1,"FRebateRate":1},{"FOrgID":"S003","FIndex":2,"FRebateRate":2},
                           {"FOrgID":"S003","FIndex":3,"FRebateRate":3}])")
                  .status,
              0);
    // What was lost before stays lost, whatever stands at its position later.
    const Outcome changed = Run({"ranges", "2040", "--set", File("changed.json", c.ranges)});
    EXPECT_TRUE(Holds(changed.out, c.told)) << changed.out;
    EXPECT_EQ(Run({"ranges", "2040", "--set", File("changed.json", c.ranges)}).status, 0);
    std::istringstream rows(RunRebate({"sql", dsn_, "--json",
                                       "select b.FLowerLimit, b.FUpperLimit, a.FRebateRate from t_FL_RebateRule a left "
                                       "join t_FL_RebateRange b on b.FID=a.FAmtRangeID and b.FIndex=a.FIndex "
                                       "order by isnull(b.FLowerLimit, 9999)"})
                                .out);
    Text rates;
    for (Text line; std::getline(rows, line);) {
      const Json row = ParseJson(line);
      rates += row["FLowerLimit"].is_null() ? "lost" : row["FLowerLimit"].dump() + "-" + row["FUpperLimit"].dump();
      rates += ":" + row["FRebateRate"].dump() + " ";
    }
    EXPECT_EQ(rates, c.rates) << c.ranges;
  }
}

TEST_F(ClientGrid, WhatIsPrintedAsJsonCanBeSetAgain) {
  const auto rows = [&] {
    return RunRebate({"sql", dsn_, "--json",
                      "select FOrgID,FAmtRangeID,FIndex,FRebateRate,FSchemeID from t_FL_RebateRule "
                      "order by FOrgID,FIndex"})
        .out;
  };
  const Text before = rows();
  for (const char* verb : {"ranges", "rates"}) {
    const Text file = File("shown.json", Run({verb, "2040", "--json"}).out);
    EXPECT_EQ(Run({verb, "2040", "--set", file, "--strict"}).status, 0) << verb;
    EXPECT_EQ(rows(), before) << verb;
  }
  const Text shown = Run({"items", "2040", "--json"}).out;
  Run({"select", "2040", "--none"});
  EXPECT_EQ(Run({"select", "2040", "--set", File("items.json", shown)}).out,
            "The selection of type 2040 now is 803 804.\n");
  EXPECT_EQ(Run({"select", "2040", "S003 S004,805"}).out, "The selection of type 2040 now is 803 804 805.\n");
}

TEST_F(ClientGrid, RatesOfOthersDoNotGoUnnamed) {
  ASSERT_EQ(Run({"ranges", "2041", "--set", Example("ranges")}).status, 0);
  const Text rates = File("one.json", R"([{"FItemID":"G001","FIndex":1,"FRebateRate":1}])");
  ASSERT_EQ(Run({"rates", "2041", "--org", "S006", "--set", rates}).status, 0);
  const Outcome refused = Run({"rates", "2041", "--set", rates});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(Holds(refused.err, "rows: the rates of organisation 806 would go")) << refused.err;
  Json form = ReadJsonFile(Example("form"));
  form["lRebateType"] = 2041;
  for (Json& row : form["vecSchemeData"]) row["FRebateRate"] = 1;
  ASSERT_EQ(Run({"form", "save", File("form.json", JsonLine(form))}).status, 0);
  EXPECT_TRUE(Holds(Run({"rates", "2041", "--org", "S006", "--set", rates}).err,
                    "the rates of scheme 1 (饮料按金额返利) would go"));
  EXPECT_EQ(Run({"rates", "2041", "--org", "S001", "--set", rates}).status, 0);
  EXPECT_EQ(RunJson({"ranges", "2041"}).size(), 2u);
}

TEST_F(ClientGrid, RowsAreStoredAsTheyStandAndCompleted) {
  EXPECT_EQ(SetRates(R"([{"FOrgID":803,"FIndex":2,"FRebateRate":"3.75","FNote":"甲"},
                         {"FOrgID":804,"FAmtRangeID":1,"FRebateRate":{"$":"decimal","value":"0.1"}}])")
                .status,
            0);
  EXPECT_EQ(Lines({"rates", "2040"}), "803 S003 杭州清源饮品有限公司 3.75 \n804 S004 青岛海岸食品有限公司 0.1 \n");
  EXPECT_EQ(SetRates(R"([{"FIndex":1,"FRebateRate":7}])", {"--org", "804"}).out, "Stored 1 rate of type 2040.\n");
  EXPECT_EQ(Lines({"rates", "2040"}), "803 S003 杭州清源饮品有限公司 3.75 \n804 S004 青岛海岸食品有限公司 7 \n");
  EXPECT_EQ(SetRates("[]").out, "Stored 0 rates of type 2040.\n");
  EXPECT_EQ(Lines({"rates", "2040"}), "803 S003 杭州清源饮品有限公司 \n804 S004 青岛海岸食品有限公司 \n");
}

TEST_F(ClientGrid, TheRestIsEveryOrganisationThatIsNotSelected) {
  EXPECT_EQ(SetRates(R"({"rows":[{"FIndex":1,"FRebateRate":4}],"rest":true})").out,
            "Stored 1 rate of type 2040 for each organisation that isn't selected.\n");
  const Outcome rules =
      RunRebate({"sql", dsn_, "select FOrgID from t_FL_RebateRule where FClassTypeID=2040", "--json"});
  EXPECT_EQ(rules.out, "{\"FOrgID\":801}\n{\"FOrgID\":802}\n{\"FOrgID\":805}\n{\"FOrgID\":806}\n{\"FOrgID\":807}\n");
}

TEST_F(ClientGrid, ItemsAreSelectedOrNot) {
  const auto ids = [&](std::vector<Text> more) {
    more.insert(more.begin(), "items");
    Text text;
    for (const Json& row : RunJson(more)) text += row["FItemID"].get<Text>() + row["Selected"].get<Text>() + " ";
    return text;
  };
  EXPECT_EQ(ids({"2040"}), "803yes 804yes 801no 802no 805no 806no 807no ");
  EXPECT_EQ(ids({"2040", "--selected"}), "803yes 804yes ");
  EXPECT_EQ(ids({"2040", "--unselected"}), "801no 802no 805no 806no 807no ");
  EXPECT_EQ(Run({"select", "2041", "401", "405", "--org", "806"}).status, 0);
  EXPECT_EQ(Lines({"items", "2041", "--selected"}), "401 G001 茉莉香皂 100克 yes \n405 G005 冰红茶 500毫升 yes \n");
  EXPECT_EQ(Lines({"rates", "2041", "--org", "806"}), "401 G001 茉莉香皂 100克 \n405 G005 冰红茶 500毫升 \n");
  EXPECT_EQ(Run({"select", "2040", "--none"}).out, "The selection of type 2040 now is empty.\n");
  EXPECT_EQ(ids({"2040", "--selected"}), "");
}

TEST_F(ClientGrid, WhatIsWrongIsToldAndChangesNothing) {
  const Text before = Run({"rates", "2040"}).out;
  const struct {
    std::vector<Text> arguments;
    int status;
    Text told;
  } cases[] = {
      {{"select", "2040"}, 2, "ID"},
      {{"select", "2040", "803", "--none"}, 2, "--none"},
      {{"select", "2040", "x"}, 1, "There is no supplier x"},
      {{"select", "2040", "S001,S099"}, 1, "There is no supplier S099"},
      {{"select", "2042", "G001"}, 1, "Type 2042 has no rate grid"},
      {{"ranges", "2049", "--set", Example("ranges")}, 1, "no rebate type 2049"},
      {{"ranges", "2040", "--scheme", "9", "--set", Example("ranges")}, 1, "There is no form 9 of type 2040"},
      {{"items", "2040", "--selected", "--unselected"}, 2, "--selected"},
      {{"items", "2042"}, 1, "rebate: "},
      {{"ranges", "all"}, 2, "TYPE"},
      {{"ranges", "2040", "--strict"}, 2, "--set"},
      {{"ranges", "2040", "--set", File("a", "[]")}, 1, "There is no range in it"},
      {{"ranges", "2040", "--set", File("b", R"([{"FLower":1}])")}, 1, "ranges[1].FUpper is missing"},
      {{"rates", "2040", "--set", File("c", R"([{"FRate":1}])")}, 1, "rows[1].FRebateRate is missing"},
      {{"rates", "2040", "--set", File("d", R"({"rows":[],"rest":1})")}, 1, "rest is due as true or false"},
      {{"rates", "2040", "--set", File("e", R"([{"FRebateRate":1,"FIndex":3}])")}, 1, "no range at position 3"},
      {{"rates", "2040", "--set", File("f", "{")}, 1, "parse error"},
      {{"rates", "2040", "--set", File("g", R"({"rows":[{"FOrgID":1,"FRebateRate":1}],"rest":true})")}, 1, "FOrgID"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Run(c.arguments);
    EXPECT_EQ(outcome.status, c.status) << c.told << outcome.out << outcome.err;
    EXPECT_TRUE(Holds(outcome.err, c.told)) << outcome.out << outcome.err;
  }
  EXPECT_EQ(Run({"rates", "2040"}).out, before);
}

}  // namespace
}  // namespace rebate
