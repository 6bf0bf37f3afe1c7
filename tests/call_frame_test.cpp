#include <gtest/gtest.h>

#include <algorithm>

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
  Events votes;        // behind the failing statement
  Text done;           // the result on an account with a row of everything
  bool stays = false;  // also where the commit fails
  bool completes = true;
};

std::vector<FailureCase> FailureTable() {
  const Variant rows = List({Row({{"FItemID", 1}})});
  const Variant lines = List({Row({{"FOrgID", 1}, {"FRebateCount", 1}})});
  const Variant type = Row({{"FRebateType", 2040}, {"FRangeItemClass", 8}});
  const Variant bands = List({Row({{"FLower", "0"}, {"FUpper", "9"}})});
  const Variant filter = Row({{"RebateClassType", 24}});
  const Variant empty_row = Row({});
  const Variant none = List({});
  const Variant null = ObjectRef();
  const Text refused = "错误号：-2147217900,Refused by the test.";
  return {
      {"BaseInfoMgr.DeleteItemNotInRule", {"DSN", 2040, false}, "False", {}, "True"},
      {"BaseInfoMgr.GetRebateRange", {"DSN", 2040}, "null", {}, "object"},
      {"BaseInfoMgr.SaveRebateRange", {"DSN", 2040, bands}, "False", {}, "True"},
      {"BaseInfoMgr.GetItemInfo", {2040, 0, "DSN", 1}, "null", {}, "object"},
      {"BaseInfoMgr.SaveSelectedItem", {"DSN", null, 2040, 1}, "False", {}, "True"},
      {"BaseInfoMgr.LoadRebateTypeData", {"DSN", 24}, "null", {"complete"}, "object", true},
      {"BaseInfoMgr.LoadSchemeRowData", {"DSN", 1, null}, "False", {}, "True"},
      {"BaseInfoMgr.LoadSchemeListData", {"DSN", filter}, "null", {}, "object"},
      {"BaseInfoMgr.CheckEnableScheme", {"DSN", 1, true, "as passed"}, "False", {}, "True", true},
      {"BaseInfoMgr.EnableScheme", {"DSN", 1, true}, "False", {"abort"}, "True"},
      {"BaseInfoMgr.SaveOneSchemeData",
       {"DSN", type, empty_row, none, none, none},
       "OK=False " + refused,
       {"abort"},
       "object"},
      {"BaseInfoMgr.SaveSchemeData", {"DSN", 0, "n", 2040, 6, "", bands, lines, ""}, "False", {"abort"}, "True"},
      {"BaseInfoMgr.ViewSchemeData", {"DSN", 1, "n", 0, 0, "", null, null, ""}, "False", {"abort"}, "True"},
      {"BaseInfoMgr.ExistsSchemeName", {"DSN", 0, "n"}, "False", {"abort"}, "True"},
      {"BaseInfoMgr.DelSchemeData", {"DSN", "1"}, "False", {"abort"}, "True"},
      {"BaseInfoMgr.CheckSchemeAllowDel", {"DSN", "1"}, "False", {"abort"}, "True"},
      {"BaseInfoMgr.CheckSchemeData", {"DSN", 0, 2041, 1, 1, "1"}, "False", {"abort"}, "True"},
      {"RebateRuleMgr.SaveAllRule", {"DSN", 2040, rows}, "False", {}, "True"},
      {"RebateRuleMgr.SaveRebateRule", {"DSN", 2040, rows, 0}, "False", {}, "True"},
      {"RebateRuleMgr.GetRebateRangeIndex", {"DSN", 1, 2040}, "0", {}, "1", true, false},
      {"RebateRuleMgr.GetRebateRuleByItem", {"DSN", 2041, 1, 1, 1}, "null", {}, "object"},
      {"RebateRuleMgr.GetRangeID", {"DSN", 2040}, "", {}, ",1,", true, false},
      {"RebateRuleMgr.GetRebateRule", {"DSN", 2040, 0, 1}, "null", {}, "object"},
      {"RebateRuleMgr.GetForbidSchemeList", {"DSN", 24}, "null", {"complete"}, "object", true},
      {"RebateRuleMgr.UnForbidSchemeList", {"DSN", "1"}, "False", {"complete"}, "True"},
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
    trace.RefuseCommit(true);  // of a complete vote on the failure, too
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

// Scheme 1 is a disabled form of type 2040 with a band and a rule; supplier 1 is selected, supplier 2 isn't.
void FillAccount(const TestAccount& account) {
  account.Execute(R"(
    insert into t_User (FUserID) values (1001)
    insert into t_Item (FItemClassID,FItemID) values (8,1)
    insert into t_Supplier (FItemID) values (1), (2)
    insert into t_FL_SchemeList (FSchemeName,FRebateType,FCheckerID,FNote) values ('n',2040,1001,'')
    insert into t_FL_RebateRange (FSchemeID,FClassTypeID,FIndex) values (1,2040,1)
    insert into t_FL_RebateRule (FSchemeID,FClassTypeID,FItemID,FOrgID,FAmtRangeID) values
      (1,2040,'0',1,1), (1,2041,'1',1,1)
    insert into t_ItemSelect (FClassTypeID,FItemID,FOrgID) values (2040,1,0))");
}

TEST(FailurePolicy, CompletesAndAnswersAFailedCommitByTheOperationsClass) {
  Trace trace;
  for (const FailureCase& one : FailureTable()) {
    SCOPED_TRACE(one.member);
    for (const bool commits : {true, false}) {
      const TestAccount account;
      FillAccount(account);
      trace.RefuseCommit(!commits);
      const Outcome outcome = CallMember(one, account.dsn(), trace);
      EXPECT_EQ(outcome.result, commits || one.stays ? one.done : one.result);
      Events expected = one.completes ? Events{"complete"} : Events{};
      if (one.completes && !commits) expected.insert(expected.end(), one.votes.begin(), one.votes.end());
      Events votes(std::find(outcome.events.begin(), outcome.events.end(), "connection"), outcome.events.end());
      std::erase_if(votes, [](const Text& event) { return event != "complete" && event != "abort"; });
      EXPECT_EQ(votes, expected);
    }
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
