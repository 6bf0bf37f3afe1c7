#ifdef REBATE_HAS_ODBC

#include "platform/database/odbc/odbc_account.h"
#include "platform/values/ascii.h"
#include "tests/postgres_server.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

TEST(ClientImportServer, MasterDataGoesInAndOutThroughADriver) {
  const std::unique_ptr<PostgresServer> server = PostgresServer::Start();
  if (!server) GTEST_SKIP() << "PostgreSQL and its ODBC driver aren't installed";
  const Text dsn = server->ConnectionText();
  OpenOdbc(dsn)->Execute(
      "create table t_ItemClass (FItemClassID int primary key, FName text);"
      "create table t_Item (FItemClassID int, FItemID int, FNumber text, FName varchar(255), FRightUserID text);"
      "create table t_ICItem (FItemID int primary key, FNumber text, FName text, FModel text, FDeleted int);"
      "create table t_MeasureUnit (FItemID int primary key, FNumber text, FName text);"
      "create table t_ItemUnit (FSrcItemId int, FItemID int, primary key (FSrcItemId, FItemID))");
  const TestAccount folder;
  const auto import = [&](const char* kind, const Text& content) {
    const Text path = folder.File("in.csv");
    std::ofstream(files::ToPath(path), std::ios::binary) << content;
    const Outcome done = RunRebate({"import", kind, path, "--dsn", dsn});
    return std::to_string(done.status) + " " + done.out + done.err;
  };
  EXPECT_EQ(import("units", "Number,Name\nPCS,件\n"), "0 Imported units: 1 new, 0 changed, 0 as they were.\n");
  Text goods = "ID,Number,Name,Model,Deleted,Units\n";
  for (int i = 1; i <= 2500; ++i) {
    goods += std::to_string(i) + ",G" + std::to_string(i) + ",\"商品'\"\"\r\n\",,0,PCS\n";
  }
  EXPECT_EQ(import("goods", goods), "0 Imported goods: 2500 new, 0 changed, 0 as they were.\n");
  const Text changed = Replace(goods, "商品", "货物");
  EXPECT_EQ(import("goods", changed), "0 Imported goods: 0 new, 2500 changed, 0 as they were.\n");
  EXPECT_EQ(RunRebate({"export", "goods", "--dsn", dsn}).out, changed);
  EXPECT_EQ(import("goods", "Number,Name\nNEW,x\nG1," + Text(250, 'y') + "\nG1,z\n").substr(0, 1), "1");
  OpenOdbc(dsn)->Execute("alter table t_Item alter column FName type varchar(10)");
  EXPECT_EQ(import("goods", "Number,Name\nNEW,x\nG1," + Text(50, 'y') + "\n").substr(0, 1), "1") << "t_Item refuses it";
  EXPECT_EQ(RunRebate({"export", "goods", "--dsn", dsn}).out, changed);
}

}  // namespace
}  // namespace rebate

#endif
