// What was typed, and what is said: mistakes that a user makes, and wishes that were read as something else.

#include <algorithm>

#include "tests/tool_kit.h"

namespace rebate {
namespace {

class ClientVerbMistakes : public ToolTest {};

TEST_F(ClientVerbMistakes, AreToldWithWhatWasLikelyMeant) {
  Save("supplier_goods");
  const Text dsn = dsn_;
  const struct {
    std::vector<Text> typed;
    int status;
    Text said;  // part of what stands on standard error, or on standard output with status 0
  } rows[] = {
      {{}, 2, "A verb is due; `rebate --help` lists them"},
      {{"--dsn", dsn}, 2, "A verb is due"},
      {{"lst"}, 2, "There is no verb lst; did you mean list?"},
      {{"lsit", "--dsn", dsn}, 2, "did you mean list?"},
      {{"--dsn", dsn, "shwo", "1"}, 2, "did you mean show?"},
      {{"forbid", "24", "--dsn", dsn}, 2, "did you mean forbidden?"},
      {{"frobnicate"}, 2, "There is no verb frobnicate; `rebate --help` lists them"},
      {{"form", "sav", "x.json"}, 2, "There is no verb sav; did you mean save?"},
      {{"form"}, 2, "A verb is due; `rebate form --help` lists them"},
      {{"list", "--dsn", dsn, "--stauts", "all"}, 2, "rebate list knows no option --stauts; did you mean --status?"},
      {{"list", "--dsn", dsn, "--supplier", "801"}, 2, "`rebate list --help` lists them"},
      {{"list", "--dsn", dsn, "--status", "enabeld"},
       2,
       "enabeld is none of enabled, disabled, all; did you mean enabled?"},
      {{"list", "--dsn", dsn, "--class", "supliers"}, 2, "did you mean suppliers?"},
      {{"list", "--dsn", dsn, "--class", "25"}, 2, "25 is none of suppliers, customers, salesmen"},
      {{"list", "--dsn", dsn, "--class", "suppliers"}, 0, "(1 scheme)"},
      {{"types", "--dsn", dsn, "--class", "41"}, 2, "is none of"},
      {{"forbidden", "supplier", "--dsn", dsn}, 2, "did you mean suppliers?"},
      {{"forbidden", "suppliers", "--dsn", dsn}, 0, "No scheme matches."},
      {{"list", "--dsn", dsn, "--type", "2047"},
       1,
       "The account offers no rebate type 2047; `rebate types` lists them"},
      {{"--dsn", dsn, "list"}, 0, "(1 scheme)"},
      {{"--dsn=" + dsn, "--json", "list"}, 0, "\"FSchemeID\":1,"},
      {{"list", "--dsn", dsn, "--id", "0"}, 0, "No scheme matches."},
      {{"list", "--dsn", dsn, "--id", "-1"}, 0, "No scheme matches."},
      {{"list", "--dsn", dsn, "--name", "%"}, 0, "No scheme matches."},
      {{"list", "--dsn", dsn, "--name", "_护"}, 0, "No scheme matches."},
      {{"list", "--dsn", dsn, "--note", "[a-z]"}, 0, "No scheme matches."},
      {{"list", "--dsn", dsn, "--name", "洗护"}, 0, "(1 scheme)"},
      {{"call", "--dsn", dsn + ".missing"}, 1, "does not exist"},
      {{"list", "--dsn", "Data Source=" + dsn + ";Rights=everything"}, 1, "Rights must be the item classes"},
      {{"list", "--dsn", "Data Source=" + dsn + ";Right=8"}, 1, "knows no connection key 'Right'"},
      {{"sql", "--dsn", dsn, "select 7 as n"}, 0, "7"},
      {{"sql", "--dsn", dsn, dsn, "select 7 as n"}, 2, "the account is named twice"},
      {{"sql"}, 2, "REBATE_DSN"},
      {{"sql", dsn, "-f", dsn + ".sql"}, 1, "Can't read " + dsn + ".sql"},
      {{"sql", dsn, "select 1", "-f", dsn + ".sql"}, 2, "not both"},
      {{"sql", dsn, "select 1", "--csv", "--json"}, 2, "excludes"},
      {{"init", "--dsn", dsn}, 1, dsn},
      {{"init", dsn, "--dsn", dsn}, 2, "the account is named twice"},
  };
  for (const auto& row : rows) {
    Text line = "rebate";
    for (const Text& word : row.typed) line += " " + word;
    const Outcome outcome = RunRebate(row.typed);
    EXPECT_EQ(outcome.status, row.status) << line << "\n" << outcome.err;
    EXPECT_TRUE(Holds(row.status == 0 ? outcome.out : outcome.err, row.said)) << line << "\n"
                                                                              << outcome.out << outcome.err;
  }
}

TEST_F(ClientVerbMistakes, ProblemsAreAllShown) {
  Text request = R"({"FRebateType":2040)";
  for (int i = 1; i <= 9; ++i) request += ",\"x" + std::to_string(i) + "\":0";
  const Outcome outcome = Run({"save", File("many.json", request + "}")});
  EXPECT_EQ(outcome.status, 1);
  // The four parts of a request are missing, nine keys are unknown.
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 4 + 9) << outcome.err;
}

#ifndef _WIN32  // whose C library has no setenv
TEST_F(ClientVerbMistakes, TheAccountComesFromTheEnvironmentInEveryVerb) {
  const Text other = account_.File("other.db");
  ASSERT_EQ(setenv("REBATE_DSN", dsn_.c_str(), 1), 0);
  EXPECT_TRUE(Holds(RunRebate({"sql", "select 70 + count(*) as n from t_Supplier where FItemID = 801"}).out, "71"));
  EXPECT_TRUE(Holds(RunRebate({"sql", "--csv"}, "select 1 as a, 'x,\"' as b").out, "a,b\n1,\"x,\"\"\"\n"));
  EXPECT_EQ(RunRebate({"init", other}).status, 0) << "a word goes before the environment";
  EXPECT_TRUE(Holds(RunRebate({"sql", other, "select 70 + count(*) as n from t_Supplier"}).out, "70"));
  EXPECT_EQ(RunRebate({"init"}).status, 1) << "the account is there already";
  unsetenv("REBATE_DSN");
}
#endif

TEST_F(ClientVerbMistakes, ControlCharactersOfAnAccountStayInside) {
  Save("supplier_goods");
  Sql("update t_FL_SchemeList set FSchemeName = 'a' + char(27) + '[2Jb', FNote = 'x' + char(13) + 'y'");
  for (const std::vector<Text>& verb : {std::vector<Text>{"show", "1"}, {"list"}}) {
    const Outcome outcome = Run(verb);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out.find_first_of("\x1b\r"), Text::npos) << outcome.out;
    EXPECT_TRUE(Holds(outcome.out, "a [2Jb")) << outcome.out;
  }
}

}  // namespace
}  // namespace rebate
