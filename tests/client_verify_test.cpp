#include <sqlite3.h>

#include "client/digit_check.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

// A sample account with what examples/ holds: schemes 1 (goods) and 2 (total), form 3, and a rate grid.
class ClientVerify : public ToolTest {
 protected:
  ClientVerify() {
    for (const char* scheme : {"supplier_goods", "supplier_total"}) EXPECT_EQ(Save(scheme).substr(0, 1), "0");
    EXPECT_EQ(Run({"form", "save", Example("form")}).status, 0);
    EXPECT_EQ(Run({"select", "2040", "803", "804"}).status, 0);
    EXPECT_EQ(Run({"ranges", "2040", "--set", Example("ranges")}).status, 0);
    EXPECT_EQ(Run({"rates", "2040", "--set", Example("rates")}).status, 0);
  }

  // A copy of the account in which the text was run.
  Text Damaged(const Text& name, const Text& text) {
    const Text path = account_.File(name);
    EXPECT_EQ(Run({"backup", path}).status, 0);
    const Outcome ran = RunRebate({"sql", path, text});
    EXPECT_EQ(ran.status, 0) << ran.err;
    return path;
  }

  // Puts what is no page in the place of the first one of a table or index.
  static void Overwrite(const Text& path, const Text& root) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    const Text query =
        "SELECT (rootpage - 1) * page_size, page_size FROM sqlite_schema, pragma_page_size WHERE name='" + root + "'";
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, query.c_str(), -1, &statement, nullptr);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
    const sqlite3_int64 place = sqlite3_column_int64(statement, 0);
    const Text garbage(static_cast<std::size_t>(sqlite3_column_int64(statement, 1)), '\xff');
    sqlite3_finalize(statement);
    sqlite3_close_v2(database);
    std::fstream file(files::ToPath(path), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(place);
    file << garbage;
  }

  // `check TABLE key,key; TABLE key`, with a `*` behind what can be mended; a line for each finding.
  static Text Told(const Json& findings) {
    Text told;
    for (const Json& finding : findings) {
      told += finding["check"].get<Text>() + (finding["mendable"] == true ? "*" : "");
      Text table;
      for (const Json& row : finding["rows"]) {
        told += row["table"] == table ? "," : " " + row["table"].get<Text>() + " ";
        table = row["table"].get<Text>();
        Text key;
        for (const auto& [column, value] : row.items()) {
          if (column != "table") key += (key.empty() ? "" : "-") + value.dump();
        }
        told += key;
      }
      told += "\n";
    }
    return told;
  }
  static Json Findings(const Text& path) { return ParseJson(RunRebate({"verify", "--json", "--dsn", path}).out); }
};

TEST_F(ClientVerify, ACleanAccountHasNoFindings) {
  const Outcome found = Run({"verify"});
  EXPECT_EQ(std::to_string(found.status) + found.out + found.err, "0Nothing is wrong.\n");
  EXPECT_EQ(Run({"verify", "--fix"}).status, 0);
  // What replaces and deletes leaves nothing behind, either.
  const Text form = File("form.json", R"({"SchemeID":3,)" + files::ReadWhole(Example("form"))->substr(1));
  EXPECT_EQ(Run({"form", "save", form}).status, 0);
  EXPECT_EQ(Run({"delete", "2", "--yes"}).status, 0);
  EXPECT_EQ(Run({"ranges", "2040", "--set", File("range.json", R"([{"FLower":0,"FUpper":70000}])")}).status, 0);
  EXPECT_EQ(RunJson({"verify"})["findings"], Json::array());
}

TEST_F(ClientVerify, EachDamageIsFoundWithItsRowsAndMendedWhereOneAnswerIsRight) {
  const struct {
    const char* damage;
    const char* found;
  } cases[] = {
      {"set identity_insert t_FL_SchemeList on insert into t_FL_SchemeList (FSchemeID, FSchemeName, FRebateType, "
       "FCheckerID, FEnable) values (9, 'late', 2041, 1, 1) insert into t_FL_AllOrgs (FSchemeID, FRowID, FItemClassID, "
       "FItemID) values (9, 1, 8, 0), (9, 2, 8, 802) insert into t_FL_AllItems (FSchemeID, FRowID, FItemID, FUnitID) "
       "values (9, 1, 402, 1), (9, 2, 403, 1)",
       "overlap t_FL_AllOrgs 1,2,5 t_FL_AllItems 2,14\n"},
      {"delete from t_FL_SchemeList where FSchemeID = 1",
       "orphan* t_FL_RebateRange 1,2\norphan* t_FL_RebateRule 1,2,3,4\norphan* t_FL_AllOrgs 1,2\n"
       "orphan* t_FL_AllItems 1,2,3\n"},
      {"insert into t_FL_CheckItems values (7, 1, 8, 801) insert into t_FL_AllItems (FItemID) values (401)",
       "orphan* t_FL_AllItems 14\norphan* t_FL_CheckItems 7-1-8-801\n"},
      {"delete from t_FL_SchemeList where FSchemeID = 3",
       "ghost* t_FL_RebateRange 5,6\nghost* t_FL_AllItems 4,5,6,7,8,9,10,11,12,13\n"
       "ghost* t_FL_RebateRule 7,8,9,10,11,12\n"
       "ghost* t_ItemSelect "
       "3-2042-404-803,3-2042-404-806,3-2042-405-803,3-2042-405-806,3-2042-409-803,3-2042-409-806\n"},
      {"insert into t_FL_SchemeLink (FSchemeID, FBillNo) values (8, 'B1')", "link t_FL_SchemeLink 1\n"},
      {"delete from t_FL_RebateRange where FSchemeID = 3 and FIndex = 2", "range t_FL_RebateRule 9,10\n"},
      {"update t_FL_RebateRule set FAmtRangeID = 1 where FID = 14", "range t_FL_RebateRule 14\n"},
      {"delete from t_FL_RebateRange where FID = 2", "range t_FL_RebateRule 2,4\n"},
      {"update t_FL_RebateRange set FIndex = 1 where FID = 2",
       "range t_FL_RebateRule 2,4\nposition t_FL_RebateRange 1,2\n"},
      {"update t_FL_AllOrgs set FRowID = 5 where FID = 2", "position t_FL_AllItems 3\nposition t_FL_RebateRule 3,4\n"},
      {"delete from t_FL_AllItems where FID = 3", "position t_FL_RebateRule 3,4\n"},
      {"update t_FL_RebateRule set FIndex = 1 where FID = 14", "position* t_FL_RebateRule 14\n"},
      {"insert into t_FL_RebateRule (FSchemeID, FRowID, FItemID, FOrgID, FRebateRate, FIndex) values (1, 1, '2', 0, 2, "
       "1), (1, 1, '2', 0, 9, 2)",
       "duplicate* t_FL_RebateRule 16\nduplicate t_FL_RebateRule 17\n"},
      {"insert into t_FL_AllOrgs (FSchemeID, FRowID, FItemClassID, FItemID) values (2, 1, 8, 802)",
       "duplicate* t_FL_AllOrgs 5\n"},
      {"update t_FL_SchemeList set FCheckerID = 77 where FSchemeID = 2", "unknown t_FL_SchemeList 2\n"},
      {"update t_FL_SchemeList set FRebateType = 9999 where FSchemeID = 2", "unknown t_FL_SchemeList 2\n"},
      {"delete from t_Item where FItemClassID = 8 and FItemID = 802", "unknown t_FL_AllOrgs 4\n"},
      {"update t_FL_AllItems set FItemID = 499 where FID = 1", "unknown t_FL_AllItems 1\n"},
      {"update t_FL_RebateRange set FLowerLimit = 15000 where FID = 2", "amount t_FL_RebateRange 2\n"},
      {"update t_FL_RebateRule set FRebateRate = 200 where FID = 1", "amount t_FL_RebateRule 1\n"},
      {"update t_FL_RebateRange set FUpperLimit = 100000.0000000001 where FID = 2 "
       "update t_FL_RebateRule set FRebateRate = 123456.7899999999 where FID = 15",
       "digits* t_FL_RebateRange 2\ndigits* t_FL_RebateRule 15\n"},
  };
  int number = 0;
  for (const auto& one : cases) {
    SCOPED_TRACE(one.damage);
    const Text path = Damaged("damaged" + std::to_string(++number) + ".db", one.damage);
    const Json found = Findings(path)["findings"];
    EXPECT_EQ(Told(found), one.found);
    EXPECT_EQ(RunRebate({"verify", "--dsn", path}).status, 1);
    Text left;
    Text mended;
    for (const Json& finding : found) {
      (finding["mendable"] == true ? mended : left) += Told(Json::array({finding}));
    }
    const Outcome fixed = RunRebate({"verify", "--fix", "--yes", "--json", "--dsn", path});
    EXPECT_EQ(fixed.status, left.empty() ? 0 : 1);
    EXPECT_EQ(Told(ParseJson(fixed.out)["mended"]), mended);
    EXPECT_EQ(Told(Findings(path)["findings"]), left);
  }
}

TEST_F(ClientVerify, MendsNothingUnasked) {
  Sql("update t_FL_RebateRule set FIndex = 1 where FID = 14");
  const Outcome unasked = Run({"verify", "--fix"});
  EXPECT_EQ(unasked.status, 1);
  EXPECT_TRUE(Holds(unasked.err, "--yes answers the question")) << unasked.err;
  EXPECT_EQ(Run({"verify", "--fix"}, "n\n", true).status, 1);
  EXPECT_EQ(Told(RunJson({"verify"})["findings"]), "position* t_FL_RebateRule 14\n");
  const Outcome asked = Run({"verify", "--fix"}, "y\n", true);
  EXPECT_EQ(asked.status, 0) << asked.err;
  EXPECT_TRUE(Holds(asked.out, "FID=14")) << asked.out;
  EXPECT_EQ(Run({"verify"}).status, 0);
}

TEST_F(ClientVerify, FindsADamagedFileAndBacksNoneUp) {
  for (const char* root : {"t_FL_RebateRule", "t_FL_RebateRule.IX_FL_RebateRule_Range"}) {
    SCOPED_TRACE(root);
    const Text path = Damaged("damaged.db", "print 'nothing'");
    Overwrite(path, root);
    const Outcome found = RunRebate({"verify", "--dsn", path});
    EXPECT_EQ(found.status, 1);
    EXPECT_TRUE(Holds(found.out, "file (")) << found.out << found.err;
    EXPECT_EQ(RunRebate({"verify", "--fix", "--yes", "--dsn", path}).status, 1);
    const Text copy = account_.File("copy.db");
    const Outcome refused = RunRebate({"backup", copy, "--dsn", path});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(Holds(refused.err, "damaged")) << refused.err;
    EXPECT_FALSE(files::IsTaken(copy));
    files::Remove(path);
  }
}

TEST(DigitsMeant, AreFifteenThatCount) {
  const struct {
    const char* amount;
    const char* meant;  // empty where nothing is too long
  } cases[] = {{"0", ""},
               {"3.4999999999", ""},
               {"123456789012345", ""},
               {"0.0000000001", ""},
               {"200000.0000000001", "200000"},
               {"-33333.33333333333", "-33333.3333333333"},
               {"1234567890123456", "1234567890123460"},
               {"99999.99999999999", "100000"}};
  for (const auto& one : cases) EXPECT_EQ(DigitsMeant(one.amount).value_or(""), one.meant) << one.amount;
}

}  // namespace
}  // namespace rebate
