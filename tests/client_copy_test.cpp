#include <algorithm>

#include "platform/values/ascii.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

class ClientCopy : public ToolTest {
 protected:
  ClientCopy() : to_(account_.File("to.db")) {
    EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
    EXPECT_EQ(Run({"form", "save", Example("form")}).status, 0);
  }

  // The lines in an order that no copy changes.
  static Text Rows(const Text& dsn, const Text& query) {
    const Outcome outcome = RunRebate({"sql", dsn, "--csv", query});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::vector<Text> lines = Split(outcome.out, '\n');
    std::sort(lines.begin(), lines.end());
    Text sorted;
    for (const Text& line : lines) sorted += line + "\n";
    return sorted;
  }
  static Text Value(const Text& dsn, const Text& expression) {
    return RunRebate({"sql", dsn, "--json", "select " + expression}).out;
  }
  void ExpectSame(const Text& table) const {
    const Text query = "select * from " + table;
    EXPECT_EQ(Rows(to_, query), Rows(dsn_, query));
  }

  Text to_;
};

TEST_F(ClientCopy, TakesEveryRowWithItsIdAndItsNumbersAlong) {
  Sql("update t_FL_SchemeList set FSchemeNo = null, FNote = 'it''s ' + char(13) + char(10) + N' 表情😀 ', FModifyDate = "
      "'1899-12-29 23:59:59.997' where FSchemeID = 1 "
      "update t_FL_RebateRule set FRebateRate = -123456789012345678.0123456789 where FID = 1 "
      "insert into t_FL_CheckItems values (1, 1, 4, 401), (1, 1, 4, 401), (null, null, null, null) "
      "insert into t_ItemSelect (FClassTypeID, FItemID) values (2040, 1)");
  EXPECT_EQ(Save("supplier_total").substr(0, 1), "0");
  EXPECT_EQ(Run({"delete", "3", "--yes"}).status, 0);
  const Outcome copied = RunRebate({"copy", dsn_, to_, "--json"});
  ASSERT_EQ(copied.status, 0) << copied.err;
  EXPECT_EQ(ParseJson(copied.out)["tables"]["t_FL_SchemeList"], 2);
  for (const char* table : {"t_FL_SchemeMode", "t_FL_SchemeList", "t_FL_RebateRange", "t_FL_RebateRule", "t_FL_AllOrgs",
                            "t_FL_AllItems", "t_FL_CheckItems", "t_ItemSelect", "t_Item", "t_User", "vw_Unit"}) {
    ExpectSame(table);
  }
  // The id of a scheme that is gone isn't given again.
  EXPECT_EQ(Save("supplier_total"), RunRebate({"save", Example("supplier_total"), "--dsn", to_}).status == 0
                                        ? "0 Stored 2026年度供应商总额返利 as scheme 4.\n"
                                        : "the copy takes no scheme");
  ExpectSame("t_FL_RebateRule");
}

TEST_F(ClientCopy, TellsWhatStaysBehind) {
  Sql("create table t_Mine (a int) alter table t_Supplier add FMine nvarchar(9)");
  const Outcome refused = RunRebate({"copy", dsn_, to_});
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(Holds(refused.err, "t_Supplier has no column FMine")) << refused.err;
  EXPECT_FALSE(files::IsTaken(to_));
  ASSERT_EQ(RunRebate({"init", to_}).status, 0);
  ASSERT_EQ(RunRebate({"sql", to_, "alter table t_Supplier add FMine nvarchar(9)"}).status, 0);
  const Outcome copied = RunRebate({"copy", dsn_, to_});
  EXPECT_EQ(copied.status, 0) << copied.err;
  EXPECT_TRUE(Holds(copied.err, "t_Mine")) << copied.err;
}

TEST_F(ClientCopy, RefusesWhatIsNoPlaceForIt) {
  const Text empty = account_.File("empty.db");
  ASSERT_EQ(RunRebate({"init", empty, "--sample"}).status, 0);
  const struct {
    Text from;
    Text to;
    const char* reason;
  } cases[] = {{dsn_, dsn_, "The target holds schemes (2)"},
               {dsn_, empty, "The target isn't empty: its table t_User holds rows (4)"},
               {account_.File("none.db"), to_, "does not exist"},
               {dsn_, account_.File("no/folder.db"), "can't be made"}};
  for (const auto& one : cases) {
    const Outcome refused = RunRebate({"copy", one.from, one.to});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(Holds(refused.err, one.reason)) << refused.err;
  }
  EXPECT_FALSE(files::IsTaken(to_));
}

TEST_F(ClientCopy, ABackupIsAnAccountOfItsOwn) {
  Sql("create table t_Mine (a int) insert into t_Mine values (5)");
  ASSERT_EQ(Run({"backup", to_}).status, 0);
  Sql("delete from t_FL_SchemeList");
  EXPECT_EQ(Value(to_, "count(*) as n, (select a from t_Mine) as a from t_FL_SchemeList"), "{\"n\":2,\"a\":5}\n");
  EXPECT_EQ(Run({"backup", to_}).status, 1);
  EXPECT_EQ(Run({"backup", to_}, "n\n", true).status, 1);
  EXPECT_EQ(Value(to_, "count(*) as n from t_FL_SchemeList"), "{\"n\":2}\n");
  EXPECT_EQ(Run({"backup", to_}, "y\n", true).status, 0);
  EXPECT_EQ(Value(to_, "count(*) as n from t_FL_SchemeList"), "{\"n\":0}\n");
  const struct {
    Text to;
    const char* reason;
  } cases[] = {{dsn_, "the account"},
               {files::FromPath(files::ToPath(to_).parent_path()), "no file"},
               {account_.File("no/folder.db"), "can't be made"}};
  for (const auto& one : cases) {
    const Outcome refused = Run({"backup", "--force", one.to});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(Holds(refused.err, one.reason)) << refused.err;
  }
}

// It would be taken for a part of the file that comes to stand there.
TEST_F(ClientCopy, NothingIsPutBesideALeftJournal) {
  for (const char* suffix : {"-wal", "-journal"}) {
    const Text left = File("to.db" + Text(suffix), "left");
    for (const Outcome& refused : {Run({"backup", to_}), RunRebate({"copy", dsn_, to_}), RunRebate({"init", to_})}) {
      EXPECT_EQ(refused.status, 1);
      EXPECT_TRUE(Holds(refused.err, left)) << refused.err;
    }
    EXPECT_FALSE(files::IsTaken(to_));
    files::Remove(left);
  }
  ASSERT_EQ(Run({"backup", to_}).status, 0);
  File("to.db-wal", "left");
  EXPECT_TRUE(Holds(Run({"backup", "--force", to_}).err, "is in use"));
}

}  // namespace
}  // namespace rebate
