#pragma once

#include <sqlite3.h>

#include "tests/embedded_kit.h"

namespace rebate {

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
    Text path = folder_.File(name);
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

  static Text Bytes(const Text& path) { return files::ReadWhole(path).value(); }

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

}  // namespace rebate
