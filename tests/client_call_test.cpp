#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "calls/call_control.h"
#include "calls/json_text.h"
#include "client/call_loop.h"
#include "platform/automation/class_objects.h"
#include "platform/automation/dispatch.h"
#include "platform/containers/vector.h"
#include "platform/login/call_observer.h"

namespace rebate {
namespace {

std::atomic<int> counters_made = 0;

// A class that the call loop knows nothing of: counts its calls and tells the observer what it would do to the world.
class Counter : public Object {
 public:
  Counter() { ++counters_made; }

  Text Add(Text sDsn, Long by, Text& msg, Long times) {
    count_ += by * (times == 0 ? 1 : times);
    msg += "+" + std::to_string(by);
    return sDsn + ":" + std::to_string(count_);
  }
  bool Work(const Text& sDsn, Ref<Vector>& rows, const Variant& fails) {
    if (CallObserver* observer = TheCallObserver()) {
      observer->Opening(sDsn);
      observer->VotingAbort();
      observer->Connecting();
      observer->Executing("select 1");
      observer->Executing("select x");
      if (ToBoolean(fails)) observer->Refused(Error(-2147217900, "Server", "Invalid column name 'x'."));
      observer->CallingComponent("TALData.Client", "Open");
      observer->VotingComplete();
    }
    if (!rows) rows = New<Vector>();
    rows->Add(1);
    return true;
  }
  void Fail() { throw Error(-2147217900, "Counter:Fail", "It failed"); }
  void Break() { throw std::runtime_error("broken"); }
  Text Thread() {
    std::ostringstream id;
    id << std::this_thread::get_id();
    return id.str();
  }
  Long Count() { return count_; }

  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("Add", &Counter::Add, {"sDsn", "by", "msg", "[times]"}),
                                     dispatch::Method("Work", &Counter::Work, {"sDsn", "rows", "fails"}),
                                     dispatch::Method("Fail", &Counter::Fail, {}),
                                     dispatch::Method("Break", &Counter::Break, {}),
                                     dispatch::Method("Thread", &Counter::Thread, {}),
                                     dispatch::Property("Count", &Counter::Count)};
    return members;
  }

 private:
  Long count_ = 0;
};

// The answers to `requests`, one a line.
std::vector<Text> Serve(const std::vector<Text>& requests, bool trace = false, std::optional<Text> dsn = "shop.db") {
  RegisterClass("TestLibrary.Counter", [] { return ObjectRef(New<Counter>()); });
  std::stringstream in;
  std::stringstream out;
  for (const Text& request : requests) in << request << '\n';
  CallControl control;
  CallServer server({"TestLibrary", std::move(dsn), trace}, control);
  ServeCalls(in, out, server);
  std::vector<Text> answers;
  for (Text line; std::getline(out, line);) answers.push_back(line);
  return answers;
}

// A program that counts answers against its lines never waits in vain.
TEST(ClientCall, AnswersEveryLineEvenAnEmptyOne) {
  const auto answers = Serve({"", " \r", R"({"op":"Counter.Count"})"});
  ASSERT_EQ(answers.size(), 3u);
  EXPECT_NE(answers[0].find("\"number\":5"), Text::npos);
  EXPECT_NE(answers[1].find("\"number\":5"), Text::npos);
}

TEST(ClientCall, AnswersHoldTheResultAndTheByRefArguments) {
  const auto answers = Serve({
      R"({"op":"Counter.Add","args":{"by":2,"msg":"m"}})",
      R"({"op":"counter.add","args":{"MSG":"","by":"3","sDsn":"other.db","times":2}})",
      R"({"op":"Counter.Count"})",
      R"({"op":"Counter.Work","args":{"rows":null,"fails":false}})",
  });
  const std::vector<Text> expected = {
      R"({"op":"Counter.Add","result":"shop.db:2","args":{"msg":"m+2"}})",
      R"({"op":"counter.add","result":"other.db:8","args":{"msg":"+3"}})",
      R"({"op":"Counter.Count","result":8})",
      R"({"op":"Counter.Work","result":true,"args":{"rows":[1]}})",
  };
  EXPECT_EQ(answers, expected);
}

TEST(ClientCall, WhatCannotBeCalledIsAnErrorAndTheNextLineIsServed) {
  const struct {
    Text request;
    Text op;  // empty where the answer has none
    Long number;
    Text description;  // part of it
  } cases[] = {
      {"no json", "", 5, "parse error"},
      {"[1]", "", 5, "A request is an object"},
      {"{}", "", 5, "\"op\" is missing"},
      {R"({"op":3})", "", 5, "\"op\" is a text"},
      {R"({"op":"Counter"})", "Counter", 5, "Unknown operation Counter"},
      {R"({"op":"Nobody.Add"})", "Nobody.Add", 429, "TestLibrary.Nobody"},
      {R"({"op":"Counter.Subtract"})", "Counter.Subtract", 438, "Subtract"},
      {R"({"op":"Counter.Add","args":{"by":1}})", "Counter.Add", 449, "msg"},
      {R"({"op":"Counter.Add","args":{"by":1,"msg":"","bye":2}})", "Counter.Add", 448, "sDsn, by, msg, times"},
      {R"({"op":"Counter.Add","args":{"by":4294967296,"msg":""}})", "Counter.Add", 6, "by: the integer"},
      {R"({"op":"Counter.Add","args":{"by":"x","msg":""}})", "Counter.Add", 13, "by is due as integer, not \"x\""},
      {R"({"op":"Counter.Work","args":{"rows":{},"fails":1}})", "Counter.Work", 13, "rows is due as Vector, not {}"},
      {R"({"op":"Counter.Count","tell":"failure"})", "Counter.Count", 5, "\"tell\" is an array"},
      {R"({"op":"Counter.Count","tell":["why"]})", "Counter.Count", 5, "not \"why\""},
      {R"({"describe":1})", "", 5, "{\"describe\":true}"},
      {R"({"op":"Counter.Count","args":[]})", "Counter.Count", 5, "\"args\" is an object"},
      {R"({"op":"Counter.Count","tread":"b"})", "Counter.Count", 5, "tread"},
      {R"({"op":"Counter.Count","thread":1})", "Counter.Count", 5, "\"thread\" is a text"},
      {R"({"op":"Counter.Break"})", "Counter.Break", -2147418113, "broken"},
  };
  for (const auto& c : cases) {
    const auto answers = Serve({c.request, R"({"op":"Counter.Count"})"});
    ASSERT_EQ(answers.size(), 2u) << c.request;
    const Json answer = ParseJson(answers[0]);
    EXPECT_EQ(answer.value("op", ""), c.op) << c.request;
    EXPECT_FALSE(answer.contains("result")) << c.request;
    EXPECT_EQ(answer["error"]["number"], c.number) << answers[0];
    EXPECT_NE(answer["error"]["description"].get<Text>().find(c.description), Text::npos) << answers[0];
    EXPECT_EQ(answers[1], R"({"op":"Counter.Count","result":0})");
  }
}

TEST(ClientCall, AnIdOfAnyKindComesBackWithEveryAnswer) {
  const auto answers = Serve({R"({"id":7,"op":"Counter.Count"})", R"({"op":"Counter.Nothing","id":{"a":[null]}})",
                              R"({"cache":"create","id":"x"})", R"({"id":null})"});
  EXPECT_EQ(answers.at(0), R"({"id":7,"op":"Counter.Count","result":0})");
  EXPECT_EQ(answers.at(1).substr(0, 47), R"({"id":{"a":[null]},"op":"Counter.Nothing","erro)");
  EXPECT_EQ(answers.at(2), R"({"id":"x","cache":"create"})");
  EXPECT_EQ(answers.at(3).substr(0, 19), R"({"id":null,"error":)");
}

// A stream that is full after so many bytes.
class FullBuffer : public std::stringbuf {
 public:
  explicit FullBuffer(std::size_t room) : room_(room) {}

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    if (str().size() + static_cast<std::size_t>(size) > room_) return 0;
    return std::stringbuf::xsputn(text, size);
  }

 private:
  std::size_t room_;
};

TEST(ClientCall, AnAnswerThatCannotBeWrittenIsTheLast) {
  RegisterClass("TestLibrary.Counter", [] { return ObjectRef(New<Counter>()); });
  std::stringstream in(R"({"op":"Counter.Count"})"
                       "\n"
                       R"({"op":"Counter.Count"})"
                       "\n"
                       R"({"op":"Counter.Count"})");
  FullBuffer buffer(40);
  std::ostream out(&buffer);
  CallControl control;
  CallServer server({"TestLibrary", std::nullopt, false}, control);
  ServeCalls(in, out, server);
  EXPECT_FALSE(out);
  EXPECT_TRUE(in) << "the third request was read though nobody would hear its answer";
}

TEST(ClientCall, AnErrorThatIsLetThroughStandsInThePlaceOfTheResult) {
  EXPECT_EQ(Serve({R"({"op":"Counter.Fail"})"}, true).at(0),
            R"({"op":"Counter.Fail","error":{"number":-2147217900,"source":"Counter:Fail",)"
            R"("description":"It failed"},"trace":[]})");
}

TEST(ClientCall, WithoutADataSourceItsArgumentIsMissing) {
  const Text answer = Serve({R"({"op":"Counter.Add","args":{"by":2,"msg":""}})"}, false, std::nullopt).at(0);
  EXPECT_EQ(ParseJson(answer)["error"]["number"], 449) << answer;
}

TEST(ClientCall, TheTraceListsInOrderWhatTheCallDid) {
  const Text request = R"({"op":"Counter.Work","args":{"rows":[],"fails":true},"thread":"b"})";
  const auto answers = Serve({request, R"({"op":"Counter.Count"})"}, true);
  EXPECT_EQ(answers.at(0),
            R"({"op":"Counter.Work","result":true,"args":{"rows":[1]},"trace":[{"open":"shop.db"},{"vote":"abort"},)"
            R"({"connection":true},{"execute":"select 1"},{"execute":"select x","error":{"number":-2147217900,)"
            R"("source":"Server","description":"Invalid column name 'x'."}},)"
            R"({"component":"TALData.Client","member":"Open"},{"vote":"complete"}]})");
  EXPECT_EQ(answers.at(1), R"({"op":"Counter.Count","result":0,"trace":[]})");
}

TEST(ClientCall, EachThreadHasInstancesOfItsOwnAndStaysTheSame) {
  const int made_before = counters_made;
  const Text add = R"({"op":"Counter.Add","args":{"by":1,"msg":""})";
  const auto answers =
      Serve({add + "}", add + R"(,"thread":"b"})", add + R"(,"thread":"b"})", R"({"op":"Counter.Thread"})",
             R"({"op":"Counter.Thread","thread":"b"})", R"({"op":"Counter.Thread","thread":"b"})"});
  EXPECT_EQ(ParseJson(answers.at(0))["result"], "shop.db:1");
  EXPECT_EQ(ParseJson(answers.at(2))["result"], "shop.db:2");
  EXPECT_EQ(counters_made - made_before, 2);
  EXPECT_NE(answers.at(3), answers.at(4));
  EXPECT_EQ(answers.at(4), answers.at(5));
}

TEST(ClientCall, ThreadsAreBoundedAndEndWhenAsked) {
  std::vector<Text> requests;
  const auto count = [](int thread) { return R"({"op":"Counter.Count","thread":"t)" + std::to_string(thread) + "\"}"; };
  const auto end = [](int thread) { return R"({"end":"t)" + std::to_string(thread) + "\"}"; };
  for (int i = 1; i <= 65; ++i) requests.push_back(count(i));
  requests.insert(requests.end(), {end(7), count(65), end(7), count(7), R"({"end":""})", R"({"end":1})"});
  const auto answers = Serve(requests);
  EXPECT_EQ(ParseJson(answers.at(63))["result"], 0);
  EXPECT_EQ(ParseJson(answers.at(64))["error"]["description"],
            "There are 64 threads: {\"end\":NAME} ends one that is no longer needed");
  EXPECT_EQ(answers.at(65), R"({"end":"t7"})");
  EXPECT_EQ(ParseJson(answers.at(66))["result"], 0);
  EXPECT_EQ(ParseJson(answers.at(67))["error"]["description"], "No thread has the name t7");
  EXPECT_EQ(ParseJson(answers.at(68))["error"]["number"], 5);
  for (const Text& answer : {answers.at(69), answers.at(70)}) EXPECT_EQ(ParseJson(answer)["error"]["number"], 5);
}

}  // namespace
}  // namespace rebate
