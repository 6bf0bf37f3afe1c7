#include "platform/database/data_source.h"

#include <gtest/gtest.h>

#include "platform/database/connect.h"
#include "platform/database/connection_text.h"
#include "tests/error_of.h"

namespace rebate {
namespace {

TEST(DataSource, NamesAnEmbeddedAccount) {
  const struct {
    const char* text;
    const char* path;
    Long user;
  } kCases[] = {
      {"shop.db", "shop.db", 1},
      {"  /var/accounts/my shop;1.db ", "/var/accounts/my shop;1.db", 1},
      {"Data Source=shop.db", "shop.db", 1},
      {" data SOURCE = shop.db ; APPUSER = 1001 ; ", "shop.db", 1001},
      {";;AppUser=0;Data Source=\"a;b='c'.db\";", "a;b='c'.db", 0},
      {"Data Source={a}}b;c}\n;AppUser=32767", "a}b;c", 32767},
      {"Data Source='it''s'", "it's", 1},
      {"Data Source=\"open", "\"open", 1},
  };
  for (const auto& one : kCases) {
    const DataSource source = DataSource::Parse(one.text);
    EXPECT_TRUE(source.embedded) << one.text;
    EXPECT_EQ(source.path, one.path) << one.text;
    EXPECT_EQ(source.app_user, one.user) << one.text;
  }
}

TEST(DataSource, HandsAnOdbcTextOnWithoutOurKeys) {
  const DataSource source =
      DataSource::Parse("AppUser=7; driver = {My Driver; 1}} ;x=}; Server=db;PWD={a;b}}};appuser2=1;Query Timeout=5;");
  EXPECT_FALSE(source.embedded);
  EXPECT_EQ(source.app_user, 7);
  EXPECT_EQ(source.connection_text, "driver = {My Driver; 1}} ;x=};Server=db;PWD={a;b}}};appuser2=1;Query Timeout=5");
  EXPECT_EQ(DataSource::Parse("Dsn=shop;Data Source=x").connection_text, "Dsn=shop;Data Source=x");
}

TEST(DataSource, RefusesWhatItCannotReadAndShowsNoValue) {
  const struct {
    const char* text;
    const char* told;
  } kCases[] = {
      {"", "No data source"},
      {"  ", "No data source"},
      {"AppUser=5", "names no account"},
      {"Data Source=;AppUser=5", "names no account"},
      {"Data Source=a;AppUser=32768", "'32768'"},
      {"Data Source=a;AppUser=-1", "'-1'"},
      {"Data Source=a;AppUser=1x", "'1x'"},
      {"Data Source=a;AppUser=", "AppUser"},
      {"Data Source=a;AppUser=1;AppUser=2", "twice"},
      {"Data Source=a;Sever=hush", "'Sever'"},
      {"Data Source=a;PWD=b;hush", "Key=Value"},
      {"Driver=x;PWD={hush", "PWD"},
      {"Driver=x;PWD={hush}y", "PWD"},
      {"Driver=x;=hush", "Key=Value"},
  };
  for (const auto& one : kCases) {
    const Error error = ErrorOf([&] { DataSource::Parse(one.text); });
    EXPECT_EQ(error.number, error_number::kInvalidCall) << one.text;
    EXPECT_NE(error.description.find(one.told), Text::npos) << one.text << ": " << error.description;
    EXPECT_EQ(error.description.find("hush"), Text::npos) << error.description;
  }
}

TEST(DataSource, ShowsNoPassword) {
  const struct {
    const char* text;
    const char* shown;
  } kCases[] = {
      {"shop.db", "shop.db"},
      {"", ""},
      {"Driver=x;PWD=abc;Server=db", "Driver=x;PWD=***;Server=db"},
      {"Driver=x; pwd = abc ", "Driver=x; pwd =***"},
      {"PassWord={a;b}};c};UID=me", "PassWord=***;UID=me"},
      {"Password=\"a;b=c\";UID=me", "Password=***;UID=me"},
      {"Password='a;b=c", "Password=***"},
      {"PWD={a;b=c", "PWD=***"},
      {"PWD=a;b;UID=me", "PWD=***;UID=me"},
      {"PWD=a;b", "PWD=***"},
      {"UID={x;PWD=a};PWD=b", "UID={x;PWD=a};PWD=***"},
      {"PWD=;x;;PWD=a;;", "PWD=***;PWD=***"},
      {"AccessToken=a;Access Token=b;ssl passphrase=c;x=d", "AccessToken=***;Access Token=***;ssl passphrase=***;x=d"},
      {"PasswordEnv=A;PasswordFile=b", "PasswordEnv=A;PasswordFile=b"},
      {"Unable to connect (PWD=b;UID=b): bad b", "Unable to connect (PWD=***;UID=b): bad b"},
      {"Old Password=a;KeystoreSecret=b;x", "Old Password=***;KeystoreSecret=***"},
  };
  for (const auto& one : kCases) EXPECT_EQ(WithoutSecrets(one.text), one.shown);
}

#ifndef REBATE_HAS_ODBC
TEST(DataSource, WithoutOdbcAServerIsAnsweredByTheRemedy) {
  const Error error = ErrorOf([] { Connect(DataSource::Parse("Driver=x;Server=db")); });
  EXPECT_EQ(error.number, database_error::kConnection);
  EXPECT_NE(error.description.find("REBATE_ODBC=ON"), Text::npos);
}
#endif

}  // namespace
}  // namespace rebate
