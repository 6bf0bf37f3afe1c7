#include "platform/login/process_cache.h"
#include "platform/login_standins/login_standins.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// The lines with which a program stands in for the host.
class ClientControl : public ToolTest {
 protected:
  std::vector<Json> Serve(const Text& requests) {
    std::istringstream lines(Run({"call", "--trace"}, requests).out);
    std::vector<Json> answers;
    for (Text line; std::getline(lines, line);) answers.push_back(ParseJson(line));
    return answers;
  }

  // A call that lists the suppliers under the data rights of user 1002, who may see four of seven.
  static Text Listing(const Text& thread) {
    return R"({"op":"BaseInfoMgr.GetItemInfo","args":{"lType":2040,"lStatus":0,"UserID":1002},"thread":")" + thread +
           "\"}\n";
  }
  static std::size_t Called(const Json& answer, const char* member) {
    std::size_t count = 0;
    for (const Json& entry : answer["trace"]) count += entry.value("member", "") == member ? 1u : 0u;
    return count;
  }
};

constexpr const char* kRights = R"({"login":{"NeedAuthrize":true,"AuthrizeItemClassList":"8"}})";

TEST_F(ClientControl, ALoginBringsDataRightsUntilTheNextOne) {
  const auto answers = Serve(Listing("a") + kRights + "\n" + Listing("b") + "{\"login\":{}}\n" + Listing("c"));
  ASSERT_EQ(answers.size(), 5u);
  EXPECT_EQ(answers[0]["result"].size(), 7u);
  EXPECT_EQ(JsonLine(answers[1]), "{\"login\":true}");
  EXPECT_EQ(answers[2]["result"].size(), 4u);
  EXPECT_EQ(Called(answers[2], "NeedAutorized"), 1u);
  EXPECT_EQ(answers[4]["result"].size(), 7u);
}

TEST_F(ClientControl, TheCacheSparesQuestionsWhileItStands) {
  const Text rights = Text(kRights) + "\n";
  const auto kept = Serve(rights + Listing("a") + Listing("a"));
  EXPECT_EQ(Called(kept[2], "NeedAutorized"), 0u);
  EXPECT_EQ(kept[2]["result"].size(), 4u);

  const auto dropped = Serve(rights + "{\"cache\":\"drop\"}\n" + Listing("a") + "{\"cache\":\"create\"}\n" +
                             Listing("a") + Listing("a"));
  EXPECT_EQ(JsonLine(dropped[1]), "{\"cache\":\"drop\"}");
  EXPECT_EQ(dropped[2]["result"].size(), 7u) << "without a cache the answer has no place to be kept in";
  EXPECT_EQ(JsonLine(dropped[3]), "{\"cache\":\"create\"}");
  EXPECT_EQ(dropped[4]["result"].size(), 4u);
  EXPECT_EQ(Called(dropped[5], "NeedAutorized"), 0u);
}

TEST_F(ClientControl, ComponentsThatFailAreNamedInTheLoginOrBesideIt) {
  const Text fail = R"("fail":["talebsbase.securityinfo"])";
  const Text rights = R"("NeedAuthrize":true,"AuthrizeItemClassList":"8")";
  for (const Text& login :
       {"{\"login\":{" + rights + "}," + fail + "}\n", "{\"login\":{" + rights + "," + fail + "}}\n",
        "{" + fail + ",\"login\":{" + rights + "}}\n"}) {
    const auto answers = Serve(login + Listing("a"));
    EXPECT_EQ(JsonLine(answers.at(0)), "{\"login\":true}") << login;
    EXPECT_EQ(answers.at(1)["result"].size(), 7u) << login;
  }
}

TEST_F(ClientControl, AWrongLineChangesNothing) {
  for (const char* line :
       {R"({"login":true})", R"({"login":{"AppUser":"1"}})", R"({"login":{"AppUser":4294967296}})",
        R"({"login":{"NeedAuthrize":1}})", R"({"login":{"OuterLogin":true}})", R"({"login":{"PropsString":5}})",
        R"({"login":{"UserName":"x"}})", R"({"login":{},"fail":"TALEBSBase.SecurityInfo"})",
        R"({"login":{"fail":[1]}})", R"({"login":{},"thread":"a"})", R"({"cache":"make"})", R"({"cache":true})",
        R"({"cache":"drop","login2":{}})"}) {
    const auto answers = Serve(Text(kRights) + "\n" + line + "\n" + Listing("a"));
    ASSERT_EQ(answers.size(), 3u) << line;
    EXPECT_TRUE(answers[1].contains("error")) << line;
    EXPECT_EQ(answers[2]["result"].size(), 4u) << line;
  }
}

TEST_F(ClientControl, TheEndOfServingLeavesNothingBehind) {
  Serve(R"({"login":{"AppUser":12},"fail":["x"]})"
        "\n");
  EXPECT_EQ(TheLoginAnswers().app_user, 1);
  EXPECT_TRUE(TheLoginAnswers().failing.empty());
  EXPECT_FALSE(FindProcessCache());
}

}  // namespace
}  // namespace rebate
