#ifdef REBATE_HAS_ODBC

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <memory>
#include <thread>

#include "platform/automation/conversion.h"
#include "platform/database/connect.h"
#include "platform/database/odbc/odbc_account.h"
#include "platform/login/data_context.h"
#include "platform/login/joint_work.h"
#include "tests/error_of.h"
#include "tests/postgres_server.h"

namespace rebate {
namespace {

// One server for all tests of the process.
class OdbcPostgres : public testing::Test {
 protected:
  static void SetUpTestSuite() { server_ = PostgresServer::Start(); }
  static void TearDownTestSuite() { server_ = nullptr; }
  void SetUp() override {
    if (!server_) GTEST_SKIP() << "PostgreSQL and its ODBC driver aren't installed";
    account_ = OpenOdbc(server_->ConnectionText());
    account_->Execute("drop table if exists parts, goods; create table goods(id int primary key, name text)");
  }

  Variant Value(std::string_view text) const { return account_->Execute(text)->FieldValue(0); }
  // As another client sees it.
  Long Count() const {
    return ToLong(OpenOdbc(server_->ConnectionText())->Execute("select count(*) from goods")->FieldValue(0));
  }

  static std::unique_ptr<PostgresServer> server_;
  ConnectionRef account_;
};

std::unique_ptr<PostgresServer> OdbcPostgres::server_;

TEST_F(OdbcPostgres, KeepsTheKindsOfValues) {
  const struct {
    const char* expression;
    Variant expected;
  } kCases[] = {
      {"true", Variant(true)},
      {"cast(-7 as smallint)", Variant(std::int16_t{-7})},
      {"2147483647", Variant(Long{2147483647})},
      {"cast(7 as bigint)", Variant(Long{7})},
      {"9007199254740993", Variant::Decimal("9007199254740993")},
      {"-2147483649", Variant::Decimal("-2147483649")},
      {"cast('12345678901234567890.1234567890' as numeric(38,10))", Variant::Decimal("12345678901234567890.123456789")},
      {"cast(-0.5 as numeric(9,2))", Variant::Decimal("-0.5")},
      {"cast(1.5 as real)", Variant(1.5f)},
      {"cast(0.1 as double precision)", Variant(0.1)},
      {"date '2026-02-28'", Variant::Date(*ParseDate("2026-02-28"))},
      {"timestamp '1899-12-29 06:00:00'", Variant::Date(-1.25)},
      {"timestamp '2026-02-28 12:00:00.25'", Variant::Date(*ParseDate("2026-02-28 12:00:00.25"))},
      {"time '18:00'", Variant::Date(0.75)},
      {"cast('plain' as varchar(20))", Variant("plain")},
      {"cast('' as text)", Variant("")},
      {"null", Variant::Null()},
      {"cast(null as int)", Variant::Null()},
      {"cast(null as numeric(9,2))", Variant::Null()},
      {"cast(null as timestamp)", Variant::Null()},
      {"cast(null as text)", Variant::Null()},
  };
  for (const auto& one : kCases) {
    const Variant actual = Value(Text("select ") + one.expression);
    EXPECT_TRUE(actual == one.expected) << one.expression << " came as type " << static_cast<int>(actual.type());
  }
}

TEST_F(OdbcPostgres, CarriesEveryTextBothWays) {
  const Text piece = "返利方案 Größe 😀'' ";
  Text megabyte = "x";
  while (megabyte.size() < 1'000'000) megabyte += piece;
  for (const Text& text : {Text("促销 😀"), Text("ÿ\t\r\n"), megabyte}) {
    account_->Execute("delete from goods; insert into goods values(1, '" + text + "')");
    const Variant name = Value("select name from goods");
    EXPECT_TRUE(name.text() == Replace(text, "''", "'")) << name.text().size() << " bytes of " << text.size();
  }
  EXPECT_EQ(account_->Execute("select 1 as \"商品名称\"")->FieldName(0), "商品名称");
}

TEST_F(OdbcPostgres, RunsEveryStatementAndGivesTheFirstRowSet) {
  EXPECT_FALSE(account_->Execute("insert into goods values(1, 'tea')"));
  EXPECT_FALSE(account_->Execute("delete from goods where id = 99"));
  const RecordsetRef rows = account_->Execute(
      "update goods set name = 'oil' where id = 99; select id, name from goods; select 5; insert into goods values(2, "
      "'rice')");
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows->FieldCount(), 2u);
  EXPECT_EQ(ToText(rows->FieldValue("NAME")), "tea");
  rows->MoveNext();
  EXPECT_TRUE(rows->Eof());
  EXPECT_EQ(Count(), 2);
}

TEST_F(OdbcPostgres, ReportsFailuresByNumberInTheServersWords) {
  account_->Execute("insert into goods values(1, 'tea')");
  const struct {
    const char* text;
    Long number;
    const char* words;
  } kCases[] = {
      {"selec 1", database_error::kStatement, "syntax error at or near \"selec\""},
      {"select abc from goods", database_error::kStatement, "column \"abc\" does not exist"},
      {"insert into goods values(1, 'again')", database_error::kConstraint, "duplicate key"},
      {"insert into goods values(null, 'none')", database_error::kConstraint, "null value"},
      {"select 1; select id from goods; insert into goods values(1, 'late')", database_error::kConstraint,
       "duplicate key"},
      {"select 10 / (3 - n) from generate_series(1, 5) n", database_error::kStatement, "division by zero"},
      {"select 1; select 10 / (3 - n) from generate_series(1, 5) n", database_error::kStatement, "division by zero"},
  };
  for (const auto& one : kCases) {
    const Error error = ErrorOf([&] { account_->Execute(one.text); });
    EXPECT_EQ(error.number, one.number) << one.text;
    EXPECT_NE(error.description.find(one.words), Text::npos) << error.description;
    EXPECT_FALSE(error.description.starts_with('[')) << error.description;
  }
  EXPECT_EQ(Count(), 1);
}

TEST_F(OdbcPostgres, GivesUpAStatementThatTakesTooLong) {
  account_->Execute("insert into goods values(1, 'tea')");
  account_->BeginWork();
  account_->Execute("update goods set name = 'oil'");
  const ConnectionRef hasty = OpenOdbc(server_->ConnectionText() + ";Query Timeout=1");
  for (const char* text : {"select pg_sleep(20)", "update goods set name = 'rice'"}) {
    hasty->BeginWork();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ErrorOf([&] { hasty->Execute(text); }).number, database_error::kTimeout);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1800)) << text;
    hasty->RollbackWork();
    EXPECT_EQ(ToLong(hasty->Execute("select 1")->FieldValue(0)), 1);
  }
}

TEST_F(OdbcPostgres, AUnitOfWorkStandsOrFallsAsAWhole) {
  account_->BeginWork();
  account_->Execute("insert into goods values(1, 'tea')");
  EXPECT_EQ(Count(), 0);
  account_->RollbackWork();
  EXPECT_EQ(ToLong(Value("select count(*) from goods")), 0);

  account_->BeginWork();
  account_->Execute("insert into goods values(2, 'oil')");
  account_->CommitWork();
  EXPECT_EQ(Count(), 1);

  account_->BeginWork();
  account_->Execute("insert into goods values(3, 'rice')");
  account_->BeginWork();
  account_->CommitWork();
  EXPECT_EQ(Count(), 1);

  account_->Execute("insert into goods values(4, 'by itself')");
  EXPECT_EQ(Count(), 2);
}

TEST_F(OdbcPostgres, ACommitThatFailsRaisesAndLeavesNothing) {
  account_->Execute("create table parts(id int references goods deferrable initially deferred)");
  account_->BeginWork();
  account_->Execute("insert into goods values(1, 'tea')");
  account_->Execute("insert into parts values(7)");
  EXPECT_EQ(ErrorOf([&] { account_->CommitWork(); }).number, database_error::kConstraint);
  EXPECT_EQ(Count(), 0);
  account_->Execute("insert into goods values(4, 'by itself')");
  EXPECT_EQ(Count(), 1);
}

TEST_F(OdbcPostgres, ALostConnectionFailsItsUnitAndIsOpenedAnew) {
  account_->BeginWork();
  account_->Execute("insert into goods values(1, 'tea')");
  server_->Kill();
  server_->Restart();
  for (const char* text : {"insert into goods values(2, 'oil')", "insert into goods values(3, 'rice')"}) {
    EXPECT_EQ(ErrorOf([&] { account_->Execute(text); }).number, database_error::kConnection) << text;
  }
  EXPECT_EQ(ErrorOf([&] { account_->CommitWork(); }).number, database_error::kConnection);
  EXPECT_EQ(Count(), 0);

  account_->BeginWork();
  account_->Execute("insert into goods values(4, 'salt')");
  account_->CommitWork();
  EXPECT_EQ(Count(), 1);
}

TEST_F(OdbcPostgres, AUnitThatTheServerGaveUpRunsNothingMore) {
  account_->Execute("insert into goods values(1, 'tea')");
  account_->BeginWork();
  account_->Execute("set transaction isolation level repeatable read; select * from goods");
  OpenOdbc(server_->ConnectionText())->Execute("update goods set name = 'oil'");
  for (const char* text : {"update goods set name = 'rice'", "insert into goods values(2, 'half')"}) {
    EXPECT_EQ(ErrorOf([&] { account_->Execute(text); }).number, database_error::kConnection) << text;
  }
  EXPECT_EQ(ErrorOf([&] { account_->CommitWork(); }).number, database_error::kConnection);
  EXPECT_EQ(ToText(Value("select max(name) from goods")), "oil");
  EXPECT_EQ(Count(), 1);
}

TEST_F(OdbcPostgres, AServerThatIsGoneIsReportedUntilItIsBack) {
  server_->Kill();
  EXPECT_EQ(ErrorOf([&] { account_->Execute("select 1"); }).number, database_error::kConnection);
  EXPECT_EQ(ErrorOf([&] { account_->Execute("select 1"); }).number, database_error::kConnection);
  EXPECT_EQ(ErrorOf([&] { account_->BeginWork(); }).number, database_error::kConnection);
  server_->Restart();
  EXPECT_EQ(ToLong(Value("select 1")), 1);
}

TEST_F(OdbcPostgres, ARefusedLoginShowsNoPassword) {
  const Error error = ErrorOf([&] { OpenOdbc(server_->ConnectionText("wrong;word")); });
  EXPECT_EQ(error.number, database_error::kConnection);
  EXPECT_NE(error.description.find("password authentication failed"), Text::npos) << error.description;
  EXPECT_NE(error.description.find("Server=127.0.0.1"), Text::npos) << error.description;
  EXPECT_NE(error.description.find("check the user and the password"), Text::npos) << error.description;
  EXPECT_EQ(error.description.find("wrong"), Text::npos) << error.description;

  const Text nowhere = Replace(server_->ConnectionText(), "Database=postgres", "Database=nowhere");
  const Error unknown = ErrorOf([&] { OpenOdbc(nowhere); });
  EXPECT_NE(unknown.description.find("check the name behind Database="), Text::npos) << unknown.description;
  const Error short_one = ErrorOf([&] { OpenOdbc(server_->ConnectionText("a")); });
  EXPECT_NE(short_one.description.find("password authentication"), Text::npos) << "no letter of a sentence is masked";
}

TEST_F(OdbcPostgres, APasswordArrivesAsItIs) {
  const Text text = Replace(server_->ConnectionText(), "PWD={" + Text(PostgresServer::kPassword) + "}", "");
  for (const Text password :
       {" a b ", "a;b", "a}b", "a};b", "{ab}", "}", ";", "a;b}", "a=b;PWD=c", "\"a\"", "''", "促销;é}", "%41+&"}) {
    account_->Execute("alter role shop password '" + Replace(password, "'", "''") + "'");
    ::setenv("REBATE_TEST_PASSWORD", password.c_str(), 1);
    for (const Text& keys : {"PWD={" + Replace(password, "}", "}}") + "}", Text("PasswordEnv=REBATE_TEST_PASSWORD")}) {
      EXPECT_EQ(ErrorOf([&] { OpenOdbc(text + ";" + keys); }).description, "") << password;
    }
  }
  ::unsetenv("REBATE_TEST_PASSWORD");
  account_->Execute("alter role shop password '" + Text(PostgresServer::kPassword) + "'");
}

TEST_F(OdbcPostgres, OfTwoUnitsThatCheckAndWriteOneStands) {
  account_->Execute("create table parts(round int, n int)");
  const ConnectionRef units[] = {OpenOdbc(server_->ConnectionText()), OpenOdbc(server_->ConnectionText())};
  constexpr int kRounds = 200;
  int stood = 0;
  for (int round = 0; round < kRounds; ++round) {
    const Text of_round = std::to_string(round);
    for (const ConnectionRef& unit : units) {
      unit->BeginWork();
      const RecordsetRef found = unit->Execute("select count(*) from parts where round = " + of_round);
      ASSERT_EQ(ToLong(found->FieldValue(0)), 0);
    }
    int stands = 0;
    for (const ConnectionRef& unit : units) {
      const Error error = ErrorOf([&] {
        unit->Execute("insert into parts values(" + of_round + ", 1)");
        unit->CommitWork();
      });
      stands += error.number == 0;
      unit->RollbackWork();
      if (error.number == 0) continue;
      EXPECT_EQ(error.number, database_error::kConnection);
      EXPECT_NE(error.description.find("try again"), Text::npos) << error.description;
    }
    EXPECT_LE(stands, 1) << "round " << round;
    stood += stands;
  }
  EXPECT_EQ(stood, kRounds) << "the other one of each round";
  EXPECT_EQ(ToLong(Value("select count(*) from parts")), kRounds);
}

TEST_F(OdbcPostgres, ADeadlocksVictimMayTryAgain) {
  account_->Execute("insert into goods values(1, 'tea'), (2, 'oil')");
  const ConnectionRef other = OpenOdbc(server_->ConnectionText());
  account_->BeginWork();
  other->BeginWork();
  account_->Execute("update goods set name = 'a' where id = 1");
  other->Execute("update goods set name = 'b' where id = 2");
  Error refused[2] = {Error(0, "", ""), Error(0, "", "")};
  std::thread crossing(
      [&] { refused[0] = ErrorOf([&] { other->Execute("update goods set name = 'b' where id = 1"); }); });
  refused[1] = ErrorOf([&] { account_->Execute("update goods set name = 'a' where id = 2"); });
  crossing.join();
  const Error& victim = refused[0].number != 0 ? refused[0] : refused[1];
  EXPECT_EQ(victim.number, database_error::kConnection);
  EXPECT_NE(victim.description.find("deadlock"), Text::npos) << victim.description;
  EXPECT_NE(victim.description.find("try again"), Text::npos) << victim.description;
  account_->RollbackWork();
  other->RollbackWork();
}

TEST_F(OdbcPostgres, AConnectionThatWasClosedWhileIdleIsOpenedAnew) {
  const ConnectionRef idle = OpenOdbc(server_->ConnectionText());
  const Text close =
      "select pg_terminate_backend(" + ToText(idle->Execute("select pg_backend_pid()")->FieldValue(0)) + ")";
  idle->BeginWork();
  account_->Execute(close);
  idle->Execute("insert into goods values(1, 'tea')");
  idle->CommitWork();
  EXPECT_EQ(Count(), 1);
}

TEST_F(OdbcPostgres, VotesDecideAndTheNextCallFindsTheServerAgain) {
  const Text dsn = server_->ConnectionText() + ";AppUser=1001";
  const auto call = [&](int id, bool complete) {
    const Ref<DataContext> context = TheGlobalApplication().GetContext();
    context->Open(dsn);
    context->VoteAbort();
    context->GetConnection()->Execute("insert into goods values(" + std::to_string(id) + ", 'x')");
    if (complete) context->VoteComplete();
    context->EndCall();
    return context->GetUserInfo()->UserID();
  };
  EXPECT_EQ(call(1, false), 1001);
  EXPECT_EQ(Count(), 0);
  call(2, true);
  EXPECT_EQ(Count(), 1);
  server_->Kill();
  server_->Restart();
  call(3, true);
  EXPECT_EQ(Count(), 2);
}

TEST_F(OdbcPostgres, SetupRefusesADatabaseThatHoldsAnAccount) {
  const DataSource source = DataSource::Parse(server_->ConnectionText());
  EXPECT_TRUE(ConnectForSetup(source));
  account_->Execute("create table \"t_FL_SchemeList\"(FSchemeID int)");
  const Error error = ErrorOf([&] { ConnectForSetup(source); });
  EXPECT_NE(error.description.find("holds an account already"), Text::npos) << error.description;
  account_->Execute("drop table \"t_FL_SchemeList\"");
}

TEST_F(OdbcPostgres, JoinedCallsStandOrFallTogether) {
  const Text dsn = server_->ConnectionText();
  const auto call = [&](const char* text, bool complete) {
    const Ref<DataContext> context = TheGlobalApplication().GetContext();
    context->Open(dsn);
    context->VoteAbort();
    context->GetConnection()->Execute(text);
    if (complete) context->VoteComplete();
    context->EndCall();
  };
  for (const bool complete : {false, true}) {
    JointWork work(dsn);
    call("insert into goods values(1, 'tea')", true);
    call("select * from goods", false);
    EXPECT_EQ(Count(), 0);
    call("insert into goods values(2, 'rice')", complete);
    EXPECT_EQ(work.IsUndone(), !complete);
    EXPECT_EQ(ErrorOf([&] { work.Commit(); }).number == 0, complete);
    EXPECT_EQ(Count(), complete ? 2 : 0);
  }
}

}  // namespace
}  // namespace rebate

#endif
