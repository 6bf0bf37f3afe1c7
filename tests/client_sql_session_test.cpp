#include <sstream>

#include "client/printable.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

class ClientSqlSession : public ToolTest {
 protected:
  // What a session prints behind its greeting for these lines, prompts included, with what went to standard error.
  Text Type(const Text& lines) {
    const Outcome session = RunRebate({"sql", dsn_}, lines, true);
    EXPECT_EQ(session.status, 0) << session.err;
    return session.out.substr(session.out.find('\n') + 1) + session.err;
  }
};

TEST_F(ClientSqlSession, RunsWhatIsTypedAndShowsAllOfIt) {
  EXPECT_EQ(Type("select 1 as a print 'said' select 2 as b;\n"),
            "sql> a\n-\n1\n(1 row)\nsaid\nb\n-\n2\n(1 row)\nsql> \n");
  EXPECT_EQ(Type("create table t_n (FID int);\ninsert into t_n\nvalues (1)\nGO 3\nupdate t_n set FID=2;\n"
                 "delete from t_n where FID=1;\n.quit\nselect 1;\n"),
            "sql> sql>   ->   -> (1 row affected)\n(1 row affected)\n(1 row affected)\nsql> (3 rows affected)\n"
            "sql> (0 rows affected)\nsql> ");
}

TEST_F(ClientSqlSession, GoesOnBehindARefusedBatchWhichLeavesNothing) {
  const Text printed = Type(
      "insert into t_User (FUserID, FName) values (7, 'x') select abc from t_User;\n"
      "select count(*) as n from t_User where FUserID = 7;\n");
  EXPECT_TRUE(Holds(printed, "(1 row affected)\nsql> n\n-\n0\n")) << printed;
  EXPECT_TRUE(printed.ends_with("Invalid column name 'abc'.\n")) << printed;
}

TEST_F(ClientSqlSession, CommandsTellOfTheAccount) {
  const Text tables = Type(".tables\n");
  EXPECT_TRUE(Holds(tables, "t_FL_SchemeList") && Holds(tables, "VW_FL_SchemeOrg")) << tables;
  const Text columns = Type(".schema T_USER\n");
  EXPECT_TRUE(Holds(columns, "FUserID") && Holds(columns, "nvarchar(")) << columns;
  const Text csv = Type(".mode csv\nselect null as a, 'b' as c;\n");
  EXPECT_TRUE(Holds(csv, "a,c\n,b\n")) << csv;
  const Text line = Type(".mode line\nselect 1 as a, 'b' as cc;\n");
  EXPECT_TRUE(Holds(line, "a   1\ncc  b\n")) << line;
  const Text read = Type(".read " + File("two.sql", "select 1 as a\nGO\nselect 2 as b\n") + "\n");
  EXPECT_TRUE(Holds(read, "a\n-\n1\n(1 row)\nb\n-\n2\n(1 row)\n")) << read;
  const Text wrong = Type(".tabels\n.schema t_Usr\n.mode xml\n.read nowhere.sql\n");
  EXPECT_TRUE(
      wrong.ends_with("There is no command .tabels; did you mean .tables?\n"
                      "There is no table or view t_Usr; did you mean t_User?\n"
                      ".mode takes table, line, csv or json\nCan't read nowhere.sql\n"))
      << wrong;
}

TEST_F(ClientSqlSession, AFileIsRunLikeAScript) {
  const Outcome ran =
      RunRebate({"sql", dsn_, "-f", File("three.sql", "select 1 as a\nGO\nselect abc from t_User\nGO\n")});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, "a\n-\n1\n(1 row)\n");
  EXPECT_TRUE(Holds(ran.err, "three.sql: batch 2: Invalid column name 'abc'.")) << ran.err;
}

TEST(ClientTerminal, ControlCharactersAreWrittenAsTheirCodes) {
  const struct {
    Text written;
    Text shown;
  } cases[] = {{"a\tb\n", "a\tb\n"},
               {"\x1b[2J\x07", "\\u001b[2J\\u0007"},
               {"\r\x7f", "\\u000d\\u007f"},
               {"\xC2\x9B", "\\u009b"},
               {"\xC2\xA5返\xC2", "\xC2\xA5返"}};
  for (const auto& c : cases) {
    std::stringbuf terminal;
    TerminalText filter(terminal);
    for (const char byte : c.written) filter.sputc(byte);
    EXPECT_EQ(terminal.str(), c.shown);
  }
  EXPECT_EQ(Printable("a\x1b\xC2\x9B\xC2\xA5\n"), "a  \xC2\xA5 ");
}

}  // namespace
}  // namespace rebate
