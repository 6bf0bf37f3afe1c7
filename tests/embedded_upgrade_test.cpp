#include <thread>

#include "platform/database/account_backup.h"
#include "tests/upgrade_kit.h"

namespace rebate {
namespace {

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

TEST_F(EmbeddedUpgrade, ABackupBeforeItIsOfTheOldVersion) {
  const Text path = Old("old.db", kTables);
  const Text copy = folder_.File("copy.db");
  AccountBackup backup(DataSource::Parse(path), copy, false);
  backup.Copy([](int) {});
  EXPECT_FALSE(backup.CanBeChecked());
  backup.Finish();
  for (const Text& file : {path, copy}) {
    EXPECT_EQ(Bytes(file).substr(60, 4), Text("\0\0\0\1", 4)) << "its version";
    ExpectUpgraded(*OpenEmbedded(file));
  }
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
    files::Remove(path);
  }
}

TEST_F(EmbeddedUpgrade, HappensOnceWhoeverComes) {
  const Text path = Old("old.db", kTables);
  std::vector<std::thread> openers;
  for (int i = 0; i < 4; ++i) openers.emplace_back([&] { ExpectUpgraded(*OpenEmbedded(path)); });
  for (std::thread& opener : openers) opener.join();
}

TEST_F(EmbeddedUpgrade, RefusesANewerAccountAsItIs) {
  const Text path = Old("new.db", "PRAGMA user_version=3;");
  EXPECT_NE(OpenRefusal(path).find("newer version"), Text::npos);
}

}  // namespace
}  // namespace rebate
