// `rebate call` on an account: what it tells of itself, of failures and of stored schemes, and the rights of a user.

#include <algorithm>

#include "tests/tool_kit.h"

namespace rebate {
namespace {

class ClientCallAccount : public ToolTest {
 protected:
  std::vector<Json> Serve(const Text& requests, std::vector<Text> options = {}) {
    options.insert(options.begin(), {"call", "--dsn", dsn_});
    std::istringstream lines(RunRebate(options, requests).out);
    std::vector<Json> answers;
    for (Text line; std::getline(lines, line);) answers.push_back(ParseJson(line));
    return answers;
  }
  Json Ask(const Text& request, std::vector<Text> options = {}) { return Serve(request + "\n", options).at(0); }

  // A request that stores the example.
  Json Storing(const Text& example, const Text& type) {
    const Json types = Ask(R"({"op":"BaseInfoMgr.LoadRebateTypeData","args":{"lRebateClass":24}})")["result"];
    std::ifstream file(Example(example));
    Json args = ParseJson(Text(std::istreambuf_iterator<char>(file), {}));
    args.erase("FRebateType");
    for (const Json& row : types) {
      if (row["FRebateType"] == type) args["SchemeConst"] = row;
    }
    return {{"op", "BaseInfoMgr.SaveOneSchemeData"}, {"args", args}, {"tell", {"scheme", "failure"}}};
  }
};

TEST_F(ClientCallAccount, AnAccountThatIsNotThereFailsAtTheStart) {
  const Outcome ran = RunRebate({"call", "--dsn", dsn_ + ".missing"}, "{\"op\":\"BaseInfoMgr.TransMode\"}\n");
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, "");
  EXPECT_TRUE(Holds(ran.err, dsn_ + ".missing does not exist")) << ran.err;
}

TEST_F(ClientCallAccount, EveryOperationIsDescribedSoThatItCanBeCalled) {
  const Json description = Ask(R"({"describe":true})")["describe"];
  EXPECT_EQ(description["protocol"], 1);
  ASSERT_EQ(description["operations"].size(), 28u);
  Text requests;
  for (const Json& operation : description["operations"]) {
    Json args = Json::object();
    for (const Json& argument : operation["args"]) {
      if (argument["name"] == "sDsn" || argument.contains("optional")) continue;
      const Text type = argument["type"];
      args[argument["name"].get<Text>()] = type == "integer"   ? Json(0)
                                           : type == "boolean" ? Json(false)
                                           : type == "text"    ? Json("")
                                           : type == "any"     ? Json::array()
                                                               : Json();
    }
    requests += JsonLine({{"op", operation["op"]}, {"args", args}}) + "\n";
  }
  for (const Json& answer : Serve(requests)) {
    const Long number = answer.contains("error") ? answer["error"]["number"].get<Long>() : 0;
    for (const Long misfit : {13, 438, 448, 449}) EXPECT_NE(number, misfit) << answer;
  }
}

TEST_F(ClientCallAccount, ASwallowedFailureTellsItsReason) {
  // The first fails in the component's own words, the second on a statement, the third not at all.
  const Text refused = R"({"op":"BaseInfoMgr.LoadSchemeListData","args":{"dct":{}},"tell":["failure"]})";
  Json answer = Ask(refused, {"--trace"});
  EXPECT_TRUE(answer["result"].is_null());
  EXPECT_EQ(answer["failure"]["description"], "RebateClassType无效，无法查询返利方案");
  const auto told = [](const Json& entry) { return entry.contains("failure"); };
  const Json& trace = answer["trace"];
  EXPECT_EQ(std::count_if(trace.begin(), trace.end(), told), 1) << trace;

  const Text taken =
      R"({"op":"BaseInfoMgr.ExistsSchemeName","args":{"lSchemeID":0,"strSchemeName":"x"},"tell":["failure"]})";
  EXPECT_TRUE(Ask(taken)["failure"].is_null());
  Sql("drop table t_FL_SchemeList");
  answer = Ask(taken, {"--trace"});
  EXPECT_EQ(answer["result"], false);
  EXPECT_TRUE(Holds(answer["failure"]["description"], "t_FL_SchemeList")) << answer;
  EXPECT_EQ(std::count_if(answer["trace"].begin(), answer["trace"].end(), told), 0) << "its statement bears it";
}

TEST_F(ClientCallAccount, TheIdOfAStoredSchemeIsToldOnRequest) {
  EXPECT_EQ(Ask(JsonLine(Storing("supplier_goods", "2041")))["scheme"], 1);
  const Json refused = Ask(JsonLine(Storing("supplier_goods_overlap", "2041")));
  EXPECT_EQ(refused["result"]["OK"], false);
  EXPECT_TRUE(refused["scheme"].is_null()) << refused;
}

// User 1002 may see four of the seven suppliers, and five customers.
TEST_F(ClientCallAccount, RightsOfTheConnectionTextHoldForCallsOnItAlone) {
  const auto listing = [](const Text& dsn, Long type) {
    return JsonLine({{"op", "BaseInfoMgr.GetItemInfo"},
                     {"args", {{"sDsn", dsn}, {"lType", type}, {"lStatus", 0}, {"UserID", 1002}}}}) +
           "\n";
  };
  const Text with = "Data Source=" + dsn_ + ";AppUser=1002;Rights=8";
  const auto answers = Serve(listing(with, 2040) + listing(dsn_, 2040) + listing(with, 2040) +
                             R"({"login":{"NeedAuthrize":true,"AuthrizeItemClassList":"8"}})" + "\n" +
                             listing(dsn_, 2040) + R"({"login":{}})" + "\n" + listing(dsn_, 2040));
  EXPECT_EQ(answers.at(0)["result"].size(), 4u);
  EXPECT_EQ(answers.at(1)["result"].size(), 7u);
  EXPECT_EQ(answers.at(2)["result"].size(), 4u);
}

TEST_F(ClientCallAccount, RightsOfTheConnectionTextHoldInTheVerbs) {
  const auto count = [&](const Text& dsn) {
    return ParseJson(RunRebate({"items", "2040", "--json", "--dsn", dsn}).out).size();
  };
  EXPECT_EQ(count("Data Source=" + dsn_ + ";AppUser=1002"), 7u);
  EXPECT_EQ(count("Data Source=" + dsn_ + ";AppUser=1002;Rights=8,1"), 4u);
  EXPECT_EQ(count("Data Source=" + dsn_ + ";AppUser=1;Rights=8 1"), 7u) << "user 1 may see all";
  const Outcome refused = RunRebate({"items", "2040", "--dsn", "Data Source=" + dsn_ + ";Rights=all"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(Holds(refused.err, "Rights must be the item classes")) << refused.err;
}

}  // namespace
}  // namespace rebate
