#ifdef REBATE_HAS_ODBC

#include "platform/database/odbc/odbc_account.h"
#include "tests/postgres_account.h"
#include "tests/postgres_server.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

class OdbcPostgresCopy : public ToolTest {
 protected:
  static void SetUpTestSuite() { server_ = PostgresServer::Start(); }
  static void TearDownTestSuite() { server_ = nullptr; }

  static std::unique_ptr<PostgresServer> server_;
};

std::unique_ptr<PostgresServer> OdbcPostgresCopy::server_;

TEST_F(OdbcPostgresCopy, GoesToAServerAndBack) {
  if (!server_) GTEST_SKIP() << "PostgreSQL and its ODBC driver aren't installed";
  MakePostgresAccount(*OpenOdbc(server_->ConnectionText()), false);
  EXPECT_EQ(Save("supplier_goods").substr(0, 1), "0");
  EXPECT_EQ(Run({"form", "save", Example("form")}).status, 0);
  Sql("update t_FL_SchemeList set FNote = 'it''s ' + N' 表情😀', FModifyDate = '2026-02-28 12:00:00.997' where "
      "FSchemeID "
      "= 1 update t_FL_RebateRule set FRebateRate = -123456789012345678.0123456789 where FID = 1");
  const Outcome there = RunRebate({"copy", dsn_, server_->ConnectionText()});
  ASSERT_EQ(there.status, 0) << there.err;
  EXPECT_EQ(RunRebate({"copy", dsn_, server_->ConnectionText()}).err,
            "rebate: The target holds schemes (2); a copy needs an account of its own. Nothing was copied\n");
  const Text back = account_.File("back.db");
  const Outcome copied = RunRebate({"copy", server_->ConnectionText(), back});
  ASSERT_EQ(copied.status, 0) << copied.err;
  for (const char* table : {"t_FL_SchemeList", "t_FL_RebateRange", "t_FL_RebateRule", "t_FL_AllItems", "t_Supplier"}) {
    const Text query = "select * from " + Text(table);
    EXPECT_EQ(RunRebate({"sql", back, "--csv", query}).out, RunRebate({"sql", dsn_, "--csv", query}).out);
  }
}

}  // namespace
}  // namespace rebate

#endif
