#ifdef REBATE_HAS_ODBC

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <utility>

#include "platform/automation/conversion.h"
#include "platform/database/odbc/odbc_account.h"
#include "platform/database/odbc/statement_words.h"
#include "platform/values/ascii.h"
#include "tests/error_of.h"
#include "tests/postgres_server.h"
#include "tests/tds_server.h"

namespace rebate {
namespace {

using Requests = std::vector<Text>;

// A file of the test's own.
class ScratchFile {
 public:
  ScratchFile() { ::close(::mkstemp(path_.data())); }
  ~ScratchFile() { std::filesystem::remove(path_); }
  const Text& path() const { return path_; }
  void Write(const Text& text, mode_t mode) const {
    std::ofstream(path_) << text;
    ::chmod(path_.c_str(), mode);
  }

 private:
  Text path_ = std::filesystem::temp_directory_path() / "rebate-password-XXXXXX";
};

// The driver for a SQL Server against a server that answers from a list: shows what the driver makes of our calls and
// of such answers, not what a server would say.
class OdbcSqlServer : public testing::Test {
 protected:
  void SetUp() override {
    const Text driver = FindDriver("libtdsodbc.so");
    if (driver.empty()) GTEST_SKIP() << "FreeTDS isn't installed";
    text_ = "Driver=" + driver + ";Server=127.0.0.1;Port=" + std::to_string(server_.port()) +
            ";TDS_Version=7.4;Database=shop;UID=sa";
    account_ = OpenOdbc(text_ + ";PWD=x");
    const Requests sent = server_.TakeRequests();
    ASSERT_EQ(sent.size(), 3u);
    for (const char* option :
         {"textsize 2147483647", "dateformat mdy", "lock_timeout 119500", "numeric_roundabort off", "arithabort"}) {
      EXPECT_NE(sent[0].find(option), Text::npos) << sent[0];
    }
    EXPECT_TRUE(EqualsIgnoreCase(TrimWhite(sent[2]), "set transaction isolation level serializable")) << sent[2];
  }
  void TearDown() override { account_ = nullptr; }

  Error Failure(std::string_view text) {
    return ErrorOf([&] { account_->Execute(text); });
  }
  Long Value(std::string_view text) { return ToLong(account_->Execute(text)->FieldValue(std::size_t{0})); }
  // The requests since the last time, without those that open a connection.
  Requests Sent() {
    Requests sent = server_.TakeRequests();
    std::erase_if(sent, [](const Text& text) {
      return text.starts_with("set ") || text.starts_with("SET ") || text.find("'CodePage'") != Text::npos;
    });
    return sent;
  }
  // Connects and gives the password that arrived.
  Text ArrivesAs(const Text& keys) {
    account_ = nullptr;
    account_ = OpenOdbc(text_ + ";" + keys);
    return server_.password();
  }

  Text text_;
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
  const struct {
    const char* text;
    Long number;
    const char* words;
  } kCases[] = {
      {"unknown", database_error::kStatement, "Invalid column name 'abc'."},
      {"duplicate", database_error::kConstraint,
       "Violation of PRIMARY KEY constraint 'pk'.\nThe statement has been terminated."},
      {"error 547", database_error::kConstraint, "Refused: error 547"},
      {"error 2601", database_error::kConstraint, "Refused: error 2601"},
      {"error 515", database_error::kConstraint, "Refused: error 515"},
      {"error 1222", database_error::kTimeout, "Refused: error 1222"},
      {"error 208", database_error::kStatement, "Refused: error 208"},
      {"error 8134", database_error::kStatement, "Refused: error 8134"},
  };
  for (const auto& one : kCases) {
    const Error error = Failure(one.text);
    EXPECT_EQ(error.number, one.number) << one.text;
    EXPECT_EQ(error.description, one.words);
  }
}

TEST_F(OdbcSqlServer, TellsARefusedLoginAsThat) {
  const struct {
    int error;
    const char* advice;
  } kCases[] = {{18456, "check the user and the password"}, {4060, "check the name behind Database="}};
  for (const auto& one : kCases) {
    server_.RefuseLogins(one.error);
    const Error error = ErrorOf([&] { ArrivesAs("PWD=b"); });
    EXPECT_EQ(error.number, database_error::kConnection);
    EXPECT_NE(error.description.find(one.advice), Text::npos) << error.description;
    EXPECT_NE(error.description.find("able to connect"), Text::npos) << "no letter is masked: " << error.description;
  }
}

TEST_F(OdbcSqlServer, APasswordArrivesAsItIs) {
  const ScratchFile file;
  for (const Text password : {"plain", " a b ", "a;b", "a}b", "a{b", "{ab}", "}", ";", "a;b}", "a=b;PWD=c", "\"a\"",
                              "\"", "'", "促销;é}", "{", "a}}b", "%41+&"}) {
    EXPECT_EQ(ArrivesAs("PWD={" + Replace(password, "}", "}}") + "};AppName=x"), password);
    ::setenv("REBATE_TEST_PASSWORD", password.c_str(), 1);
    EXPECT_EQ(ArrivesAs("PasswordEnv=REBATE_TEST_PASSWORD"), password);
    file.Write(password + "\r\nsecond line", 0600);
    EXPECT_EQ(ArrivesAs("passwordfile={" + file.path() + "}"), password);
  }
  // A data source that is registered says what the driver is.
  file.Write("[shop]\nDriver=" + FindDriver("libtdsodbc.so") +
                 "\nServer=127.0.0.1\nTDS_Version=7.4\nPort=" + std::to_string(server_.port()) + "\n",
             0600);
  ::setenv("ODBCINI", file.path().c_str(), 1);
  const Text unregistered = std::exchange(text_, "DSN=shop;UID=sa");
  EXPECT_EQ(ArrivesAs("PWD={a;b}}c}"), "a;b}c");
  EXPECT_EQ(ArrivesAs("PasswordEnv=REBATE_TEST_PASSWORD"), "%41+&");
  text_ = unregistered;
  ::unsetenv("ODBCINI");
  ::unsetenv("REBATE_TEST_PASSWORD");
  const struct {
    Text keys;
    const char* told;
  } kRefused[] = {
      {"PWD={hush}};}", "can't be told"}, {"PasswordEnv=REBATE_TEST_PASSWORD", "isn't set"},
      {"PasswordEnv=", "names nothing"},  {"PasswordFile=/no/such/hush.file", "can't be read"},
      {"PasswordFile=/", "no file"},      {"PWD=hush;PasswordEnv=HOME", "twice"},
      {"PWD='hush;x'", "braces"},
  };
  for (const auto& one : kRefused) {
    const Error error = ErrorOf([&] { ArrivesAs(one.keys); });
    EXPECT_EQ(error.number, error_number::kInvalidCall) << one.keys;
    EXPECT_NE(error.description.find(one.told), Text::npos) << one.keys << ": " << error.description;
    EXPECT_EQ(error.description.find("hush}"), Text::npos);
  }
  for (const mode_t mode : {0640, 0604}) {
    file.Write("hush", mode);
    EXPECT_NE(ErrorOf([&] { ArrivesAs("PasswordFile=" + file.path()); }).description.find("chmod 600"), Text::npos);
  }
}

TEST_F(OdbcSqlServer, AConnectionThatWasClosedWhileIdleIsOpenedAnewOnce) {
  for (const char* first : {"insert one", "select one"}) {
    account_->BeginWork();
    account_->CommitWork();
    server_.CloseClient();
    account_->BeginWork();
    account_->Execute(first);
    account_->CommitWork();
  }
  server_.TakeRequests();

  account_->BeginWork();
  account_->Execute("insert one");
  server_.CloseClient();
  EXPECT_EQ(Failure("insert two").number, database_error::kConnection);
  EXPECT_EQ(Failure("insert three").number, database_error::kConnection);
  account_->RollbackWork();
  EXPECT_EQ(Sent(), (Requests{"begin", "insert one"})) << "nothing runs behind what was done and lost";

  Value("select @@trancount");
  server_.CloseClient();
  EXPECT_EQ(Failure("commit tran").number, database_error::kConnection) << "it may have stood before";
}

TEST_F(OdbcSqlServer, AUnitThatReadsLocksNothingAndWritesOnlyOnWhatItRead) {
  account_->BeginWork();
  Value("select shown");
  Value("select 'insert' /* update */ as [delete]");
  EXPECT_EQ(Sent(), (Requests{"select shown", "select 'insert' /* update */ as [delete]"}));
  account_->CommitWork();
  EXPECT_EQ(Sent(), Requests{});

  account_->BeginWork();
  Value("select shown");
  account_->Execute("insert one");
  account_->CommitWork();
  EXPECT_EQ(Requests(Sent()).front(), "select shown");

  for (const char* writes : {"insert one", "select shown into #x", "select shown with (updlock)", "select newid()"}) {
    account_->BeginWork();
    server_.SetShown(1);
    Value("select shown");
    server_.SetShown(2);
    server_.TakeRequests();
    const Error error = Failure(writes);
    EXPECT_EQ(error.number, database_error::kConnection) << writes;
    EXPECT_NE(error.description.find("try again"), Text::npos) << error.description;
    const Requests sent = Sent();
    EXPECT_EQ(Requests(sent.begin(), sent.begin() + 3), (Requests{"begin", "select shown", "rollback"}));
    EXPECT_NE(ErrorOf([&] { account_->CommitWork(); }).number, 0);
  }

  account_->BeginWork();
  Value("select shown");
  server_.SetShown(-1222);
  EXPECT_EQ(Failure("insert one").number, database_error::kTimeout);
  EXPECT_EQ(Failure("insert two").number, database_error::kConnection) << "it rests on what couldn't be read again";
}

TEST_F(OdbcSqlServer, DoesWithoutOptionsThatAServerRefuses) {
  server_.RefuseOptions();
  account_ = nullptr;
  account_ = OpenOdbc(text_ + ";PWD=x");
  const Requests sent = server_.TakeRequests();
  EXPECT_NE(std::find(sent.begin(), sent.end(), "set arithabort on"), sent.end()) << "the others still count";
  EXPECT_EQ(Failure("insert one").number, 0);
}

TEST_F(OdbcSqlServer, GivesUpInTheTimeThatIsSet) {
  account_ = nullptr;
  account_ = OpenOdbc(text_ + ";PWD=x;Query Timeout=1");
  EXPECT_NE(server_.TakeRequests().at(0).find("lock_timeout 900"), Text::npos)
      << "the server gives up a wait for a lock first: a driver waits for its answer as long again";
  account_->BeginWork();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Failure("wait").number, database_error::kTimeout);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1800));
}

TEST_F(OdbcSqlServer, RefusesCharactersThatTheDatabaseLacks) {
  server_.SetCodePage(936);
  account_ = nullptr;
  account_ = OpenOdbc(text_ + ";PWD=x");
  for (const char* text : {"insert '促销€'", "insert N'😀'", "insert [😀] -- '😀'", "insert /* '😀 /* '*/ */ 'x'"}) {
    EXPECT_EQ(Failure(text).number, 0) << text;
  }
  server_.TakeRequests();
  for (const char* text : {"insert 'a😀'", "insert N'x', '😀'"}) {
    EXPECT_NE(Failure(text).description.find("'😀'"), Text::npos) << text;
  }
  EXPECT_EQ(Sent(), Requests{}) << "nothing of them runs";
}

TEST_F(OdbcSqlServer, CommitsTheLevelsThatATextLeftOpen) {
  const struct {
    const char* text;
    bool begins;
  } kCases[] = {{"Begin Tran insert x", true},
                {"begin  \t transaction insert x", true},
                {"begin/* 1 */tran insert x", true},
                {"begin -- 1\ntran insert x", true},
                {"insert 'begin tran'", false},
                {"begin insert x end", false},
                {"exec anything", true}};
  for (const auto& one : kCases) {
    account_->BeginWork();
    EXPECT_EQ(server_.TakeRequests(), Requests{}) << "readying takes no lock";
    account_->Execute(one.text);
    account_->CommitWork();
    const Requests sent = Sent();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "while @@trancount > 1 commit tran"), one.begins ? 1 : 0)
        << one.text;
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "commit"), 1) << one.text;
    EXPECT_EQ(Value("select @@trancount"), 0);
    server_.TakeRequests();
  }
}

TEST_F(OdbcSqlServer, AUnitThatTheServerUndidRunsNothingMore) {
  account_->BeginWork();
  account_->Execute("insert one");
  const Error deadlock = Failure("deadlock");
  EXPECT_EQ(deadlock.number, database_error::kConnection);
  EXPECT_TRUE(deadlock.description.starts_with("Rerun the transaction.\n")) << deadlock.description;
  EXPECT_NE(deadlock.description.find("try again"), Text::npos) << deadlock.description;
  server_.TakeRequests();
  EXPECT_EQ(Failure("insert two").number, database_error::kConnection);
  EXPECT_EQ(ErrorOf([&] { account_->CommitWork(); }).number, database_error::kConnection);
  EXPECT_EQ(server_.TakeRequests(), Requests{});

  account_->BeginWork();
  EXPECT_NE(Failure("deadlock").number, 0);
  EXPECT_EQ(Value("select @@trancount"), 1) << "nothing was undone yet";
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

// A plain insert, and how many of them go together.
Text Insert(const Text& value) {
  return "insert into t (a,b)\r\nvalues (1,'" + value + "')";
}
Text Joined(const Text& value, int count) {
  Text text;
  for (int i = 0; i < count; ++i) text += Insert(value) + ";\r\n";
  return text;
}

std::vector<Text> Inserts(std::vector<Text> values) {
  for (Text& value : values) value = Insert(value);
  return values;
}

TEST_F(OdbcSqlServer, SendsPlainInsertsOfAUnitTogether) {
  const auto run = [&](const std::vector<Text>& texts) {
    std::size_t done = 0;
    account_->ExecuteEach(texts, done);
    EXPECT_EQ(done, texts.size());
    return Sent();
  };
  const auto inserts = [](const Text& value, std::size_t count) { return std::vector<Text>(count, Insert(value)); };
  EXPECT_EQ(run(inserts("a", 2)), inserts("a", 2)) << "outside of a unit each stands by itself";
  account_->BeginWork();
  EXPECT_EQ(run(inserts("a", 3)), (Requests{"begin", Insert("a"), Joined("a", 2)})) << "the first begins the unit";
  EXPECT_EQ(run(inserts("b", 450)), (Requests{Joined("b", 200), Joined("b", 200), Joined("b", 50)}));
  const Text large = Insert(Text(200'000, 'c'));
  EXPECT_EQ(run({Insert("d"), Insert("d"), large, large, "delete from t", Insert("d")}),
            (Requests{Joined("d", 2) + large + ";\r\n", large, "delete from t", Insert("d")}));
  account_->CommitWork();
  EXPECT_EQ(Sent(), (Requests{"commit", "rollback"})) << "the last by the driver itself";
}

TEST_F(OdbcSqlServer, ARefusedInsertAmongJoinedOnesUndoesTheUnit) {
  const struct {
    std::vector<Text> values;
    Long number;
    const char* words;
    std::size_t done;
  } kCases[] = {
      {{"refused", "a", "b"}, database_error::kConstraint, "Violation by insert into t", 0},
      {{"a", "refused", "b", "refused"}, database_error::kConstraint, "Violation by insert into t", 1},
      {{"a", "b", "refused"}, database_error::kConstraint, "Violation by insert into t", 2},
      {{"a", "deadlock", "b"}, database_error::kConnection, "try again", 1},
      {{"a", "vanish"}, database_error::kConnection, "", 0},
  };
  for (const auto& one : kCases) {
    account_->BeginWork();
    account_->Execute("delete from t");
    std::size_t done = 0;
    const Error error = ErrorOf([&] { account_->ExecuteEach(Inserts(one.values), done); });
    EXPECT_EQ(error.number, one.number) << error.description;
    EXPECT_NE(error.description.find(one.words), Text::npos) << error.description;
    EXPECT_EQ(done, one.done) << one.values[0];
    EXPECT_EQ(Failure("insert more").number, database_error::kConnection);
    EXPECT_NE(ErrorOf([&] { account_->CommitWork(); }).number, 0);
    const Requests sent = Sent();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "commit"), 0) << one.values[0];
  }
}

TEST_F(OdbcSqlServer, AnInsertThatCannotBeCarriedIsRefusedAtItsOwnPlace) {
  server_.SetCodePage(936);
  account_ = nullptr;
  account_ = OpenOdbc(text_ + ";PWD=x");
  account_->BeginWork();
  account_->Execute("delete from t");
  Sent();
  std::size_t done = 0;
  const Error error = ErrorOf([&] { account_->ExecuteEach(Inserts({"促销", "促销", "😀"}), done); });
  EXPECT_NE(error.description.find("'😀'"), Text::npos);
  EXPECT_EQ(done, 2u);
  EXPECT_EQ(Sent().front(), Joined("促销", 2)) << "what came before it has run";
}

TEST(StatementWords, KnowsPlainInserts) {
  for (const char* plain : {"INSERT INTO #T (a,b)\r\nVALUES (1,'x'';')", "insert into t(a)values(-1.5e-07) \r\n",
                            "insert into t (a,b,c,d) values (null, N'促', getdate( ), .5)"}) {
    EXPECT_TRUE(odbc::IsPlainInsert(plain)) << plain;
  }
  for (const char* other : {"",
                            "delete from t",
                            "insert into t values (1)",
                            "insert into t (a) values (1) select 1",
                            "insert into t (a) values (1);",
                            "insert into t (a) values (1), (2)",
                            "insert into t (a) select 1",
                            "insert into t (a) output inserted.a values (1)",
                            "insert into t (a) values ((select 1))",
                            "insert into t (a) values (f(1))",
                            "insert into t (a) values (@@identity)",
                            "insert into t (a) values (1+1)",
                            "insert into t (a) values (1 2)",
                            "insert into t (a) values (,)",
                            "insert into t (a) values ()",
                            "insert into t (a) values ('x)",
                            "insert into t (a) values (1) -- x",
                            "insert into t (a) values (1) /*",
                            "insert into t (a) values (default)",
                            "insert into t (a) values (0x1F)",
                            "insert into @t (a) values (1)",
                            "insert into t (a) values (123456789012345678901234567890123456789)",
                            "insert into [t] (a) values (1)"}) {
    EXPECT_FALSE(odbc::IsPlainInsert(other)) << other;
  }
}

}  // namespace
}  // namespace rebate

#endif
