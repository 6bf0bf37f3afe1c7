#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "tests/embedded_kit.h"

namespace rebate {
namespace {

// Files as version 1 of the account made them, statement by statement.
class EmbeddedUpgrade : public EmbeddedTest {
 protected:
  static constexpr std::string_view kHead =
      "PRAGMA journal_mode=WAL; BEGIN;"
      "CREATE TABLE account_views(name TEXT NOT NULL PRIMARY KEY COLLATE NOCASE, columns TEXT NOT NULL, "
      "source TEXT NOT NULL) WITHOUT ROWID;"
      "PRAGMA application_id=1380073812; PRAGMA user_version=1;";

  static constexpr std::string_view kTables =
      R"(CREATE TABLE "t_v"("FID" INTEGER PRIMARY KEY AUTOINCREMENT,"FAmount" decimal(28,10) DEFAULT (1.5),)"
      R"("FMoney" money NOT NULL DEFAULT (0),"FName" nvarchar(20) COLLATE account_text DEFAULT ('it''s'),)"
      R"("FAgain" decimal(28,10) GENERATED ALWAYS AS ("FAmount") VIRTUAL,"FCode" varchar(5) COLLATE account_text,)"
      R"("FFlag" int DEFAULT (-1),"FSum" decimal(10,2) DEFAULT (t_assign((1+2),16777475,17433349)));)"
      R"(CREATE UNIQUE INDEX "t_v.UQ_t_v_FCode" ON "t_v"("FCode");)"
      R"(CREATE UNIQUE INDEX "t_v.IX_one" ON "t_v"("FMoney","FName");)"
      R"(CREATE INDEX "t_v.IX_two" ON "t_v"("FAmount");)"
      R"(CREATE TABLE "t_k"("FA" decimal(9,4) NOT NULL,"FB" nvarchar(9) COLLATE account_text NOT NULL);)"
      R"(CREATE UNIQUE INDEX "t_k.PK_t_k" ON "t_k"("FA","FB");)"
      "INSERT INTO account_views VALUES('v_v', 'a\nb', 'select FAmount, FName from t_v');"
      "INSERT INTO t_v(FID,FAmount,FMoney,FName,FCode) VALUES(3,200000.0000000001,2,'a','x'),"
      "(4,0.30000000000000004,0.00005,'b','y'),(5,-0.0,33333333333333.332,'c','z'),(6,NULL,12345.67890000001,'d',NULL),"
      "(9,1e-9,1,'e','q'); DELETE FROM t_v WHERE FID=9;"
      "INSERT INTO t_k VALUES(1.5,'a'),(15e-1,'b'),(100,'a');";

  static int CompareBytes(void*, int left, const void* a, int right, const void* b) {
    const std::string_view one(static_cast<const char*>(a), static_cast<std::size_t>(left));
    return one.compare({static_cast<const char*>(b), static_cast<std::size_t>(right)});
  }

  Text Old(const char* name, std::string_view sql) const {
    Text path = (directory_ / name).string();
    sqlite3* database = nullptr;
    sqlite3_open(path.c_str(), &database);
    sqlite3_create_collation_v2(database, "account_text", SQLITE_UTF8, nullptr, CompareBytes, nullptr);
    // What version 1 called where a default is converted.
    sqlite3_create_function_v2(
        database, "t_assign", 3, SQLITE_UTF8, nullptr,
        [](sqlite3_context* context, int, sqlite3_value** arguments) { sqlite3_result_value(context, arguments[0]); },
        nullptr, nullptr, nullptr);
    const Text all = Text(kHead) + Text(sql) + "COMMIT";
    EXPECT_EQ(sqlite3_exec(database, all.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close_v2(database);
    return path;
  }

  static Text Bytes(const Text& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static Text OpenRefusal(const Text& path) {
    try {
      OpenEmbedded(path);
    } catch (const Error& error) {
      EXPECT_EQ(error.number, database_error::kConnection);
      return error.description;
    }
    return {};
  }

  static void ExpectUpgraded(Connection& account) {
    EXPECT_EQ(RowsOn(account, "select FID, FAmount, FMoney, FAgain from t_v order by FID"),
              "3,200000,2,200000;4,0.3,0.0001,0.3;5,0,33333333333333.3,0;6,NULL,12345.6789,NULL");
    EXPECT_EQ(RowsOn(account, "select FA, FB from t_k where FA = 1.5 order by FB"), "1.5,a;1.5,b");
    EXPECT_EQ(RowsOn(account, "select count(*) from v_v where a = 0.3"), "1");
  }
};

TEST_F(EmbeddedUpgrade, HealsAmountsAndKeepsTheRest) {
  const Text path = Old("old.db", kTables);
  ExpectUpgraded(*OpenEmbedded(path));
  const ConnectionRef account = OpenEmbedded(path);
  ExpectUpgraded(*account);
  account->Execute("insert into t_v (FCode) values ('w')");
  EXPECT_EQ(RowsOn(*account, "select FID, FAmount, FMoney, FName, FFlag, FSum from t_v where FCode = 'w'"),
            "10,1.5,0,it's,-1,3")
      << "the number of a row that is gone doesn't come back, and defaults stay";
  struct {
    const char* text;
    const char* says;
  } refused[] = {
      {"insert into t_v (FCode, FName) values (null, 'n')",
       "Violation of UNIQUE KEY constraint 'UQ_t_v_FCode'. Cannot insert duplicate key in object 'dbo.t_v'."},
      {"insert into t_v (FMoney, FName, FCode) values (2.0, 'A', '1')",
       "Cannot insert duplicate key row in object 'dbo.t_v' with unique index 'IX_one'."},
      {"insert into t_k values (100.0, 'a')",
       "Violation of PRIMARY KEY constraint 'PK_t_k'. Cannot insert duplicate key in object 'dbo.t_k'."},
      {"set identity_insert t_v on insert into t_v (FID, FCode, FName) values (3, '2', 'm')",
       "Violation of PRIMARY KEY constraint 'PK_t_v'. Cannot insert duplicate key in object 'dbo.t_v'."}};
  for (const auto& one : refused) EXPECT_EQ(RefusalOn(*account, one.text).description, one.says) << one.text;
}

TEST_F(EmbeddedUpgrade, RefusesWhatItCannotCarryOverAndChangesNothing) {
  struct {
    const char* sql;
    const char* says;
  } cases[] = {
      {R"(CREATE TABLE "t_d"("a" nvarchar(9) COLLATE account_text NOT NULL);)"
       R"(CREATE UNIQUE INDEX "t_d.PK_t_d" ON "t_d"("a"); INSERT INTO t_d VALUES('ＡＢ'),('ab');)",
       "several rows of table t_d have the same key PK_t_d"},
      {R"(CREATE TABLE "t_d"("a" int,"b" int); CREATE UNIQUE INDEX "t_d.IX_n" ON "t_d"("a","b");)"
       "INSERT INTO t_d VALUES(NULL,1),(NULL,1);",
       "several rows of table t_d have the same key IX_n"},
      {R"(CREATE TABLE "t_d"("a" int,"b" int GENERATED ALWAYS AS (("a"+1)) VIRTUAL);)", "column b of table t_d"},
      {R"(CREATE TABLE "t_d"("a" int DEFAULT (t_abs(-3)));)", "the default of column a of table t_d"},
      {R"(CREATE TABLE "t_d"("a" decimal(9,2)); INSERT INTO t_d VALUES('much');)", "a of table t_d holds what is no"}};
  for (const auto& one : cases) {
    const Text path = Old("odd.db", Text(kTables) + one.sql);
    const Text before = Bytes(path);
    const Text refusal = OpenRefusal(path);
    EXPECT_NE(refusal.find(one.says), Text::npos) << refusal;
    EXPECT_NE(refusal.find(path), Text::npos) << refusal;
    EXPECT_EQ(Bytes(path), before) << one.says;
    std::filesystem::remove(path);
  }
}

TEST_F(EmbeddedUpgrade, HappensOnceWhoeverComes) {
  const Text path = Old("old.db", kTables);
  std::vector<std::thread> openers;
  for (int i = 0; i < 4; ++i) openers.emplace_back([&] { ExpectUpgraded(*OpenEmbedded(path)); });
  for (std::thread& opener : openers) opener.join();
}

TEST_F(EmbeddedUpgrade, SurvivesAKillAtAnyMoment) {
  Text rows;
  for (int i = 0; i < 20000; ++i) rows += "INSERT INTO t_k VALUES(" + std::to_string(i + 1000) + ".5,'k');";
  const Text old = Old("old.db", Text(kTables) + rows);
  int undone = 0;
  for (int milliseconds = 1; milliseconds < 200; milliseconds += 20) {
    const Text path = (directory_ / "killed.db").string();
    std::filesystem::copy_file(old, path);
    const pid_t child = fork();
    if (child == 0) {
      OpenRefusal(path);
      _exit(0);
    }
    usleep(static_cast<useconds_t>(milliseconds) * 1000);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    undone += std::filesystem::exists(path + "-wal") ? 1 : 0;
    const ConnectionRef account = OpenEmbedded(path);
    ExpectUpgraded(*account);
    EXPECT_EQ(RowsOn(*account, "select count(*), sum(FA - 0.5) from t_k"), "20003,219990101.5");
    for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(path + suffix);
  }
  EXPECT_GT(undone, 0) << "no kill came in time";
}

TEST_F(EmbeddedUpgrade, RefusesANewerAccountAsItIs) {
  const Text path = Old("new.db", "PRAGMA user_version=3;");
  EXPECT_NE(OpenRefusal(path).find("newer version"), Text::npos);
}

}  // namespace
}  // namespace rebate
