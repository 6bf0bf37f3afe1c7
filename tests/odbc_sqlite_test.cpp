#ifdef REBATE_HAS_ODBC

#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>

#include <filesystem>

#include "platform/automation/conversion.h"
#include "platform/database/odbc/odbc_account.h"
#include "tests/error_of.h"
#include "tests/postgres_server.h"

namespace rebate {
namespace {

// A driver without wide functions: the driver manager stands between, so its texts are plain ones.
class OdbcSqlite : public testing::Test {
 protected:
  void SetUp() override {
    const Text driver = FindDriver("libsqlite3odbc.so");
    if (driver.empty()) GTEST_SKIP() << "The SQLite ODBC driver isn't installed";
    Text directory = std::filesystem::temp_directory_path() / "rebate-odbc-XXXXXX";
    ASSERT_NE(::mkdtemp(directory.data()), nullptr);
    directory_ = directory;
    text_ = "Driver=" + driver + ";Database=" + directory_ + "/shop.db;Timeout=100";
    account_ = OpenOdbc(text_);
    account_->Execute("create table goods(id integer primary key, name text, price double, sold datetime)");
  }
  void TearDown() override {
    account_ = nullptr;
    if (!directory_.empty()) std::filesystem::remove_all(directory_);
  }

  Variant Value(const ConnectionRef& connection, std::string_view text) {
    return connection->Execute(text)->FieldValue(0);
  }

  Text directory_;
  Text text_;
  ConnectionRef account_;
};

TEST_F(OdbcSqlite, GivesRowsBackAsTheyWerePut) {
  Text long_name;
  while (long_name.size() < 100'000) long_name += "rice and salt, ";
  account_->Execute("insert into goods values(1, 'green tea', 0.1, '2026-02-28 18:00:00')");
  account_->Execute("insert into goods values(2, '" + long_name + "', null, null)");
  const RecordsetRef rows = account_->Execute("select id, name, price, sold from goods order by id");
  account_ = nullptr;
  EXPECT_TRUE(rows->FieldValue("id") == Variant(1));
  EXPECT_EQ(rows->FieldValue("name").text(), "green tea");
  EXPECT_TRUE(rows->FieldValue("price") == Variant(0.1));
  EXPECT_EQ(ToText(rows->FieldValue("sold")), "2026-02-28 18:00:00");
  rows->MoveNext();
  EXPECT_TRUE(rows->FieldValue("name").text() == long_name);
  EXPECT_TRUE(rows->FieldValue("price").IsNull());
  EXPECT_TRUE(rows->FieldValue("sold").IsNull());
  rows->MoveNext();
  EXPECT_TRUE(rows->Eof());
}

// Writes down what it hears.
class Heard : public BatchListener {
 public:
  void Rows(RecordsetRef rows) override { text += "rows " + ToText(rows->FieldValue(0)) + "\n"; }
  void Affected(std::int64_t count) override { text += "affected " + std::to_string(count) + "\n"; }
  void Message(const Text& message) override { text += message + "\n"; }

  Text text;
};

TEST_F(OdbcSqlite, TellsRowSetsAndCounts) {
  Heard heard;
  account_->ExecuteFor("insert into goods(id) values(7)", heard);
  account_->ExecuteFor("update goods set name='x' where id=8", heard);
  account_->ExecuteFor("select id from goods", heard);
  EXPECT_EQ(heard.text, "affected 1\naffected 0\nrows 7\n");
}

TEST_F(OdbcSqlite, AColumnNameOfAnyLengthDoesNoHarm) {
  // The driver names the column by its expression; the length that it tells overflows.
  const RecordsetRef rows = account_->Execute("select '" + Text(40'000, 'x') + "'");
  EXPECT_EQ(rows->FieldValue(std::size_t{0}).text(), Text(40'000, 'x'));
  EXPECT_TRUE(rows->FieldName(0).starts_with("'xxx"));
}

// Such a driver gets its texts in the process's locale.
TEST_F(OdbcSqlite, RefusesCharactersThatTheDriverCannotCarry) {
  const struct {
    const char* locale;
    const char* text;
    bool arrives;
  } kCases[] = {{"C", "tea", true},         {"C", "促销", false},    {"C", "é", false},
                {"C.UTF-8", "促销é", true}, {"C.UTF-8", "😀", false}, {"C.UTF-8", "促😀", false}};
  for (const auto& one : kCases) {
    ASSERT_NE(::setlocale(LC_CTYPE, one.locale), nullptr);
    account_ = OpenOdbc(text_);
    const Error error = ErrorOf([&] { account_->Execute("insert into goods(name) values('" + Text(one.text) + "')"); });
    EXPECT_EQ(error.number == 0, one.arrives) << one.locale << ": " << one.text;
    if (one.arrives) {
      EXPECT_EQ(Value(account_, "select name from goods").text(), one.text);
    } else {
      EXPECT_NE(error.description.find("driver can't carry"), Text::npos) << error.description;
      EXPECT_TRUE(Value(account_, "select count(*) from goods") == Variant(0));
    }
    account_->Execute("delete from goods");
  }
  account_->Execute("insert into goods(name) values('促销')");
  ::setlocale(LC_CTYPE, "C");
  account_ = OpenOdbc(text_);
  EXPECT_NE(ErrorOf([&] { Value(account_, "select name from goods"); }).number, 0) << "it isn't what is stored";
}

TEST_F(OdbcSqlite, AUnitOfWorkHoldsNoLockBehindItsEnd) {
  const ConnectionRef other = OpenOdbc(text_);
  account_->BeginWork();
  account_->Execute("insert into goods(id) values(1)");
  EXPECT_NE(ErrorOf([&] { other->Execute("insert into goods(id) values(2)"); }).number, 0);
  account_->RollbackWork();
  other->Execute("insert into goods(id) values(2)");
  EXPECT_TRUE(Value(account_, "select id from goods") == Variant(2));
}

TEST_F(OdbcSqlite, RefusesWhatTheEngineRefuses) {
  const Error error = ErrorOf([&] { account_->Execute("select abc from goods"); });
  EXPECT_EQ(error.number, database_error::kStatement);
  EXPECT_NE(error.description.find("no such column: abc"), Text::npos) << error.description;
  EXPECT_FALSE(error.description.starts_with('[')) << error.description;
}

}  // namespace
}  // namespace rebate

#endif
