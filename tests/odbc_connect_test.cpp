#ifdef REBATE_HAS_ODBC

#include <gtest/gtest.h>

#include <chrono>

#include "platform/database/odbc/odbc_account.h"
#include "platform/values/text.h"
#include "tests/error_of.h"
#include "tests/loopback.h"
#include "tests/postgres_server.h"

namespace rebate {
namespace {

Text SqlServerText(int port) {
  return "Driver=" + FindDriver("libtdsodbc.so") + ";Server=127.0.0.1;Port=" + std::to_string(port) +
         ";TDS_Version=7.4;Database=shop;UID=sa;PWD={top;secret}";
}

TEST(OdbcConnect, ARefusedConnectionNamesTheServerAndHidesThePassword) {
  if (FindDriver("libtdsodbc.so").empty()) GTEST_SKIP() << "FreeTDS isn't installed";
  const Error error = ErrorOf([] { OpenOdbc(SqlServerText(FreePort())); });
  EXPECT_EQ(error.number, database_error::kConnection);
  EXPECT_NE(error.description.find("Server=127.0.0.1"), Text::npos) << error.description;
  EXPECT_EQ(error.description.find("secret"), Text::npos) << error.description;
  EXPECT_EQ(error.description.find("[FreeTDS]"), Text::npos) << error.description;
}

TEST(OdbcConnect, ASilentServerIsGivenUpAtTheLoginTimeout) {
  if (FindDriver("libtdsodbc.so").empty()) GTEST_SKIP() << "FreeTDS isn't installed";
  const Listener server;  // takes connections and never says a word
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ErrorOf([&] { OpenOdbc(SqlServerText(server.port()) + ";Login Timeout=1"); }).number,
            database_error::kConnection);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST(OdbcConnect, AMissingDriverIsToldWithTheRemedy) {
  for (const Text text : {"Driver=/no/such/driver.so;Server=x;Pwd=hush", "DSN=no such source;Password=hush"}) {
    const Error error = ErrorOf([&] { OpenOdbc(text); });
    EXPECT_EQ(error.number, database_error::kConnection) << text;
    EXPECT_NE(error.description.find("odbcinst"), Text::npos) << error.description;
    EXPECT_EQ(error.description.find("hush"), Text::npos) << error.description;
  }
}

TEST(OdbcConnect, ATimeoutThatIsNoNumberIsRefused) {
  const Error error = ErrorOf([] { OpenOdbc("DSN=x;query timeout=soon"); });
  EXPECT_EQ(error.number, error_number::kInvalidCall);
  EXPECT_NE(error.description.find("query timeout"), Text::npos) << error.description;
}

TEST(WideText, CrossesBothWaysAndReplacesWhatIsNotWellFormed) {
  for (const Text text : {"", "abc", "é", "促销", "😀𝄞", "\xEF\xBF\xBD"}) EXPECT_EQ(FromWide(ToWide(text)), text);
  EXPECT_EQ(ToWide("😀"), u"\xD83D\xDE00");
  const Text nul("a\0b", 3);
  EXPECT_EQ(FromWide(ToWide(nul)), nul);

  EXPECT_EQ(ToWide("a\x80"
                   "b"),
            u"a\xFFFD"
            u"b");
  EXPECT_EQ(ToWide("\xC0\x80"), u"\xFFFD\xFFFD");
  EXPECT_EQ(ToWide("\xE4\xBF"), u"\xFFFD\xFFFD");
  EXPECT_EQ(ToWide("\xED\xA0\x80"), u"\xFFFD\xFFFD\xFFFD");
  EXPECT_EQ(FromWide(u"a\xD83D"
                     u"b\xDE00"),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
}

}  // namespace
}  // namespace rebate

#endif
