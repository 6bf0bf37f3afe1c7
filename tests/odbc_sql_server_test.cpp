#ifdef REBATE_HAS_ODBC

#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "platform/database/odbc/odbc_account.h"
#include "tests/error_of.h"
#include "tests/postgres_server.h"
#include "tests/tds_server.h"

namespace rebate {
namespace {

using Requests = std::vector<Text>;

// The driver for a SQL Server against a server that answers from a list: shows what the driver makes of our calls and
// of such answers, not what a server would say.
class OdbcSqlServer : public testing::Test {
 protected:
  void SetUp() override {
    const Text driver = FindDriver("libtdsodbc.so");
    if (driver.empty()) GTEST_SKIP() << "FreeTDS isn't installed";
    account_ = OpenOdbc("Driver=" + driver + ";Server=127.0.0.1;Port=" + std::to_string(server_.port()) +
                        ";TDS_Version=7.4;Database=shop;UID=sa;PWD=x");
    EXPECT_EQ(server_.TakeRequests(), Requests{"set textsize 2147483647"});
  }
  void TearDown() override { account_ = nullptr; }

  Error Failure(std::string_view text) {
    return ErrorOf([&] { account_->Execute(text); });
  }

  TdsServer server_;
  ConnectionRef account_;
};

TEST_F(OdbcSqlServer, KeepsTheKindsOfValues) {
  const Variant expected[] = {Variant(true),
                              Variant(std::int16_t{200}),
                              Variant(std::int16_t{-7}),
                              Variant(Long{2147483647}),
                              Variant::Decimal("9007199254740993"),
                              Variant::Currency(-12345678),
                              Variant::Currency(15000),
                              Variant::Decimal("12345678901234.5678"),
                              Variant::Decimal("-0.05"),
                              Variant(1.5f),
                              Variant(0.1),
                              Variant::Date(*ParseDate("2026-02-28 12:00:00")),
                              Variant::Date(*ParseDate("2026-02-28")),
                              Variant("促销 😀")};
  const RecordsetRef rows = account_->Execute("kinds");
  ASSERT_EQ(rows->FieldCount(), std::size(expected));
  for (std::size_t field = 0; field < std::size(expected); ++field) {
    EXPECT_TRUE(rows->FieldValue(field) == expected[field]) << rows->FieldName(field);
  }
  rows->MoveNext();
  for (std::size_t field = 0; field < std::size(expected); ++field) {
    EXPECT_TRUE(rows->FieldValue(field).IsNull()) << rows->FieldName(field);
  }
}

TEST_F(OdbcSqlServer, NumbersErrorsAndKeepsTheServersWords) {
  const Error unknown = Failure("unknown");
  EXPECT_EQ(unknown.number, database_error::kStatement);
  EXPECT_EQ(unknown.description, "Invalid column name 'abc'.");
  const Error duplicate = Failure("duplicate");
  EXPECT_EQ(duplicate.number, database_error::kConstraint);
  EXPECT_EQ(duplicate.description, "Violation of PRIMARY KEY constraint 'pk'.\nThe statement has been terminated.");
}

TEST_F(OdbcSqlServer, CommitsTheLevelsThatATextLeftOpen) {
  account_->BeginWork();
  EXPECT_EQ(server_.TakeRequests(), Requests{}) << "readying takes no lock";
  account_->Execute("Begin Tran insert x");
  account_->CommitWork();
  const Requests sent = server_.TakeRequests();
  ASSERT_GE(sent.size(), 4u);
  EXPECT_EQ(Requests(sent.begin(), sent.begin() + 4),
            (Requests{"begin", "Begin Tran insert x", "while @@trancount > 1 commit tran", "commit"}));
  EXPECT_EQ(ToLong(account_->Execute("select open")->FieldValue(std::size_t{0})), 0);
}

TEST_F(OdbcSqlServer, AUnitThatTheServerUndidRunsNothingMore) {
  account_->BeginWork();
  account_->Execute("insert one");
  EXPECT_EQ(Failure("deadlock").description, "Rerun the transaction.");
  server_.TakeRequests();
  EXPECT_EQ(Failure("insert two").number, database_error::kConnection);
  EXPECT_EQ(ErrorOf([&] { account_->CommitWork(); }).number, database_error::kConnection);
  EXPECT_EQ(server_.TakeRequests(), Requests{});

  account_->BeginWork();
  EXPECT_NE(Failure("deadlock").number, 0);
  EXPECT_EQ(ToLong(account_->Execute("select open")->FieldValue(std::size_t{0})), 1) << "nothing was undone yet";
  EXPECT_NE(Failure("unknown").number, 0);
  account_->Execute("insert behind a refused one");
  account_->CommitWork();
}

TEST_F(OdbcSqlServer, ALostConnectionIsOpenedAnewForTheNextUnit) {
  account_->BeginWork();
  EXPECT_EQ(Failure("vanish").number, database_error::kConnection);
  EXPECT_EQ(Failure("insert two").number, database_error::kConnection);
  account_->RollbackWork();
  account_->BeginWork();
  account_->Execute("insert three");
  account_->CommitWork();
}

}  // namespace
}  // namespace rebate

#endif
