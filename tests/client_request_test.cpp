#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "client/request_check.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

const char* const kGoodRequest = R"({
  "FRebateType": 2041,
  "SchemeMainData": {"FSchemeName": "年度返利"},
  "AllRangesData": [{"FLowerLimit": 0, "FUpperLimit": "100.5"}],
  "AllOrgsData": [{"FRowID": 0, "FItemClassID": 8, "FItemID": "801", "FShowName": "", "CheckPoints": {"7": null}}],
  "AllGridRows": [null, {
    "FItemIDs": [null, {"FRowID": 2, "FItemID": 401, "FUnitID": 1, "FShowName": ""}],
    "FCheckItems": null,
    "FRebateRates": [{"FRowID": 2, "FRebateRate": {"$": "decimal", "value": "1.5"}, "FIndex": 1}]
  }]
})";

TEST(ClientRequest, WhatTheOperationReadsIsAccepted) {
  EXPECT_EQ(RequestProblems(ParseJson(kGoodRequest)), std::vector<Text>());
}

// Each case spoils the good request at one place.
TEST(ClientRequest, EachProblemIsNamedWithItsPlace) {
  const struct {
    const char* at;
    const char* value;  // what stands there instead; null takes the key away
    const char* problem;
  } cases[] = {
      {"/FRebateType", nullptr, "One of SchemeConst and FRebateType is due"},
      {"/FRebateType", "\"goods\"", "FRebateType is due as an integer, not \"goods\""},
      {"/SchemeConst", "{}", "One of SchemeConst and FRebateType is due"},
      {"/AllOrgsData", nullptr, "AllOrgsData is missing"},
      {"/AllOrgsData", "null", "AllOrgsData is due as an array, not null"},
      {"/AllOrgsData/0", "null", "AllOrgsData[1] is due as an object, not null"},
      {"/AllOrgsData/0/FItemID", "8.5",
       "AllOrgsData[1].FItemID is due as an integer, or the text of a number, not 8.5"},
      {"/AllOrgsData/0/FItemID", "2147483648",
       "AllOrgsData[1].FItemID is due as an integer, or the text of a number, not 2147483648"},
      {"/AllOrgsData/0/CheckPoints/x", "1", "AllOrgsData[1].CheckPoints.x: the keys are item ids"},
      {"/AllRangesData/0/FUpperLimit", "\"\"", "AllRangesData[1].FUpperLimit is due as a number, not \"\""},
      {"/AllGridRows/1/FItemIDs/1/FItemID", nullptr, "AllGridRows[2].FItemIDs[2].FItemID is missing"},
      {"/AllGridRows/1/FItemIDs/1/FUnit", "1", "AllGridRows[2].FItemIDs[2].FUnit is unknown"},
      {"/AllGridRows/1/FRebateRates/0/FRebateRate", "[]",
       "AllGridRows[2].FRebateRates[1].FRebateRate is due as a number, not []"},
      {"/SchemeMainData/FSchemeName", "7", "SchemeMainData.FSchemeName is due as a text, not 7"},
      {"/Note", "\"\"", "Note is unknown"},
  };
  for (const auto& c : cases) {
    const Json::json_pointer at(c.at);
    Json request = ParseJson(kGoodRequest);
    if (c.value != nullptr) {
      request[at] = ParseJson(c.value);
    } else {
      request[at.parent_pointer()].erase(at.back());
    }
    const std::vector<Text> problems = RequestProblems(request);
    ASSERT_FALSE(problems.empty()) << c.problem;
    EXPECT_EQ(problems[0], c.problem);
  }
}

TEST(ClientRequest, AllProblemsAreCollected) {
  Json request = ParseJson(kGoodRequest);
  for (int i = 0; i < 20; ++i) request["AllRangesData"].push_back(Json::object());
  EXPECT_EQ(RequestProblems(request).size(), 40u);
  EXPECT_EQ(RequestProblems(Json::array()).size(), 1u);
}

TEST(ClientRequest, TheExamplesAreWellFormed) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(files::ToPath(REBATE_SOURCE_DIR "/examples"))) {
    if (!files::FromPath(entry.path().filename()).starts_with("supplier_")) continue;
    std::ifstream file(entry.path());
    const Text text(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(RequestProblems(ParseJson(text)), std::vector<Text>()) << entry.path();
    ++count;
  }
  EXPECT_GE(count, 3);
}

}  // namespace
}  // namespace rebate
