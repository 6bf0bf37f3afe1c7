#include <gtest/gtest.h>

#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"
#include "platform/automation/dispatch.h"
#include "platform/database/error_numbers.h"
#include "service/base_info_mgr.h"
#include "service/component_classes.h"
#include "service/rebate_rule_mgr.h"
#include "tests/test_account.h"

namespace rebate {
namespace {

using Events = std::vector<Text>;

const Text kMissing = "Data Source=/nowhere/missing.db";

// A result as text: containers by their kind.
Text Described(const Variant& result) {
  if (!result.IsObject()) return result.IsEmpty() ? "nothing" : ToText(result);
  if (!result.object()) return "null";
  const Ref<Dictionary> answer(dynamic_cast<Dictionary*>(result.object().get()));
  return answer && answer->Has("Err") ? "OK=" + ToText(answer->Value("OK")) + " " + ToText(answer->Value("Err"))
                                      : "object";
}

struct FailureCase {
  const char* member;
  std::vector<Variant> arguments;  // in order; the data source as the text "DSN"
  Text result;
  Events votes;  // behind the failing statement
};

std::vector<FailureCase> FailureTable() {
  const Variant rows = List({Row({{"FItemID", 1}})});
  const Variant bands = List({Row({{"FLower", "0"}, {"FUpper", "9"}})});
  const Variant filter = Row({{"RebateClassType", 24}});
  const Variant empty_row = Row({});
  const Variant null = ObjectRef();
  const Text refused = "错误号：-2147217900,Refused by the test.";
  return {
      {"BaseInfoMgr.DeleteItemNotInRule", {"DSN", 2040, false}, "False", {}},
      {"BaseInfoMgr.GetRebateRange", {"DSN", 2040}, "null", {}},
      {"BaseInfoMgr.SaveRebateRange", {"DSN", 2040, bands}, "False", {}},
      {"BaseInfoMgr.GetItemInfo", {2040, 0, "DSN", 1}, "null", {}},
      {"BaseInfoMgr.SaveSelectedItem", {"DSN", null, 2040, 1}, "False", {}},
      {"BaseInfoMgr.LoadRebateTypeData", {"DSN", 24}, "null", {"complete"}},
      {"BaseInfoMgr.LoadSchemeRowData", {"DSN", 1, null}, "False", {}},
      {"BaseInfoMgr.LoadSchemeListData", {"DSN", filter}, "null", {}},
      {"BaseInfoMgr.CheckEnableScheme", {"DSN", 1, true, "as passed"}, "False", {}},
      {"BaseInfoMgr.EnableScheme", {"DSN", 1, true}, "False", {"abort"}},
      {"BaseInfoMgr.SaveOneSchemeData",
       {"DSN", empty_row, empty_row, rows, rows, rows},
       "OK=False " + refused,
       {"abort"}},
      {"BaseInfoMgr.SaveSchemeData", {"DSN", 0, "n", 2040, 6, "", bands, rows, ""}, "False", {"abort"}},
      {"BaseInfoMgr.ViewSchemeData", {"DSN", 1, "n", 0, 0, "", null, null, ""}, "False", {"abort"}},
      {"BaseInfoMgr.ExistsSchemeName", {"DSN", 0, "n"}, "False", {"abort"}},
      {"BaseInfoMgr.DelSchemeData", {"DSN", "1"}, "False", {"abort"}},
      {"BaseInfoMgr.CheckSchemeAllowDel", {"DSN", "1"}, "False", {"abort"}},
      {"BaseInfoMgr.CheckSchemeData", {"DSN", 0, 2041, 1, 0, "1"}, "False", {"abort"}},
      {"RebateRuleMgr.SaveAllRule", {"DSN", 2040, rows}, "False", {}},
      {"RebateRuleMgr.SaveRebateRule", {"DSN", 2040, rows, 0}, "False", {}},
      {"RebateRuleMgr.GetRebateRangeIndex", {"DSN", 1, 2040}, "0", {}},
      {"RebateRuleMgr.GetRebateRuleByItem", {"DSN", 2041, 1, 1, 1}, "null", {}},
      {"RebateRuleMgr.GetRangeID", {"DSN", 2040}, "", {}},
      {"RebateRuleMgr.GetRebateRule", {"DSN", 2040, 0, 1}, "null", {}},
      {"RebateRuleMgr.GetForbidSchemeList", {"DSN", 24}, "null", {"complete"}},
      {"RebateRuleMgr.UnForbidSchemeList", {"DSN", "1"}, "False", {"complete"}},
  };
}

struct Outcome {
  Text result;
  Events events;
};

Outcome CallMember(const FailureCase& one, const Text& dsn, Trace& trace) {
  const Text member = one.member;
  const std::size_t dot = member.find('.');
  const ObjectRef object = FindComponentClass(member.substr(0, dot))->create();
  std::vector<Variant> arguments = one.arguments;
  for (Variant& argument : arguments) {
    if (argument == Variant("DSN")) argument = Variant(dsn);
  }
  trace.Take();
  const Variant result = object->Invoke(member.substr(dot + 1), arguments);
  return {Described(result), trace.Take()};
}

TEST(FailurePolicy, AnswersARefusedStatementByTheOperationsClass) {
  RegisterComponent();
  const TestAccount account;
  Trace trace;
  for (const FailureCase& one : FailureTable()) {
    SCOPED_TRACE(one.member);
    trace.RefuseStatement(1);
    Outcome outcome = CallMember(one, account.dsn(), trace);
    EXPECT_EQ(outcome.result, one.result);
    const bool opens_without_vote = Text(one.member) == "RebateRuleMgr.GetRangeID";
    Events expected = opens_without_vote ? Events{"open", "connection"} : Events{"open", "abort", "connection"};
    std::erase_if(outcome.events,
                  [](const Text& event) { return event.find(' ') != Text::npos || event.starts_with("TAL"); });
    expected.insert(expected.end(), one.votes.begin(), one.votes.end());
    EXPECT_EQ(outcome.events, expected);
  }
}

TEST(FailurePolicy, AnswersADataSourceThatIsNoAccountLikewise) {
  Trace trace;
  for (const FailureCase& one : FailureTable()) {
    SCOPED_TRACE(one.member);
    const Outcome outcome = CallMember(one, kMissing, trace);
    EXPECT_TRUE(outcome.result == one.result || outcome.result.starts_with("OK=False 错误号：-2147467259,"))
        << outcome.result;
    Events expected = {"open"};
    expected.insert(expected.end(), one.votes.begin(), one.votes.end());
    EXPECT_EQ(outcome.events, expected);
  }
}

TEST(TransMode, IsTwoOnAFreshInstanceAndTouchesNothing) {
  Trace trace;
  for (const ComponentClass& one : TheComponent().classes) {
    EXPECT_EQ(one.create()->Invoke("TransMode", {}), Variant(2)) << one.name;
  }
  EXPECT_TRUE(trace.Take().empty());
}

TEST(ComponentClasses, AnswerUnderTheirProgramIdentifiers) {
  RegisterComponent();
  EXPECT_EQ(CreateObject("TALMRebateRuleMgr.BaseInfoMgr")->Members().All().size(), 19u);
  EXPECT_EQ(CreateObject("talmrebaterulemgr.rebaterulemgr")->Members().All().size(), 9u);
}

TEST(UpdateBatch, RunsElementsInOrderAndSkipsEmptyOnes) {
  const TestAccount account;
  Trace trace;
  BaseInfoMgr manager;
  const Variant batch = Variant::Array({"", "insert into t_ItemClass (FItemClassID,FName) values (90,'a')", "",
                                        "update t_ItemClass set FName='b' where FItemClassID=90"});
  manager.UpdateBatch(account.dsn(), batch);
  EXPECT_EQ(trace.TakeStatements().size(), 2u);
  EXPECT_EQ(account.Rows("select FName from t_ItemClass where FItemClassID=90"), "b");
  manager.UpdateBatch(account.dsn(), Variant::Array({"", ""}));
  EXPECT_EQ(trace.Take(), (Events{"open", "abort", "connection", "complete"}));
}

TEST(UpdateBatch, RaisesTheErrorOfTheFirstRefusedElementAndLeavesNothing) {
  const TestAccount account;
  Trace trace;
  BaseInfoMgr manager;
  try {
    manager.UpdateBatch(account.dsn(), Variant::Array({"delete from t_FL_SchemeMode", "select FNoSuch from t_ItemClass",
                                                       "delete from t_FL_SchemeList"}));
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number, database_error::kStatement);
    EXPECT_EQ(error.source, "BaseInfoMgr:UpdateBatch");
    EXPECT_EQ(error.description, "Invalid column name 'FNoSuch'.");
  }
  const Events events = trace.Take();
  EXPECT_EQ(events.back(), "abort");
  EXPECT_EQ(events.size(), 6u);  // the third element isn't sent
  EXPECT_EQ(account.Rows("select count(*) from t_FL_SchemeMode"), "16");
  EXPECT_THROW(manager.UpdateBatch(account.dsn(), "no array"), Error);
}

TEST(CallFrame, ServesTwoDataSourcesInTurn) {
  const TestAccount one;
  const TestAccount two;
  one.Execute("update t_FL_SchemeMode set FTypeName='one'");
  two.Execute("update t_FL_SchemeMode set FTypeName='two'");
  BaseInfoMgr manager;
  for (const TestAccount* account : {&one, &two, &one}) {
    const Ref<Vector> types = manager.LoadRebateTypeData(account->dsn(), 24);
    EXPECT_EQ(ObjectAs<Dictionary>(types->Item(1))->Value("FTypeName"), Variant(account == &one ? "one" : "two"));
  }
}

TEST(LoadRebateTypeData, GivesTheTypesOfAClassInOrder) {
  const TestAccount account;
  Trace trace;
  BaseInfoMgr manager;
  const Ref<Vector> types = manager.LoadRebateTypeData(account.dsn(), 24);
  ASSERT_EQ(types->Size(), 7);
  EXPECT_EQ(ObjectAs<Dictionary>(types->Item(1))->Value("FRebateType"), Variant("2040"));
  EXPECT_EQ(ObjectAs<Dictionary>(types->Item(7))->Value("FRebateType"), Variant("2046"));
  EXPECT_EQ(trace.Take(),
            (Events{"open", "abort", "connection",
                    "SELECT * FROM t_FL_SchemeMode WHERE FRebateClass =24 ORDER BY FIndex ", "complete"}));
  EXPECT_FALSE(manager.LoadRebateTypeData(account.dsn(), 99));
  EXPECT_EQ(trace.Take().back(), "complete");
}

}  // namespace
}  // namespace rebate
