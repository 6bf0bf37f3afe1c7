#include "platform/database/odbc/link.h"

#include <algorithm>
#include <optional>

#include "platform/automation/conversion.h"
#include "platform/database/connection_text.h"
#include "platform/database/odbc/result_reader.h"
#include "platform/values/text.h"

namespace rebate::odbc {
namespace {

constexpr std::string_view kLoginTimeoutKey = "Login Timeout";
constexpr std::string_view kQueryTimeoutKey = "Query Timeout";
constexpr SQLULEN kLoginTimeout = 15;
constexpr SQLULEN kQueryTimeout = 120;
// A driver that answers every further step with an error isn't asked without end.
constexpr int kMostRefusals = 100;

SQLULEN Seconds(const ConnectionKey& key) {
  const std::optional<std::uint32_t> seconds = WholeNumber<std::uint32_t>(key.value);
  if (!seconds) {
    throw Error(error_number::kInvalidCall, "DataSource",
                Text(key.key) + " must be a whole number of seconds, not '" + key.value + "'.");
  }
  return *seconds;
}

Environment OpenEnvironment() {
  Environment environment(SQL_NULL_HANDLE);
  SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  return environment;
}

SQLPOINTER Number(SQLULEN value) {
  return reinterpret_cast<SQLPOINTER>(value);
}

Text Advice(const std::vector<Diagnostic>& diagnostics) {
  for (const Diagnostic& diagnostic : diagnostics) {
    if (diagnostic.state.starts_with("IM") || diagnostic.message.find("Can't open lib") != Text::npos) {
      return "Name a registered driver (odbcinst -q -d lists them) or the path of its library as Driver=.";
    }
    if (diagnostic.state == "28000") return "Check the user and the password, and the login's right to the database.";
  }
  return "Check that the server runs, that its name and port are right, and that it can be reached from here.";
}

Error CannotConnect(const Settings& settings, const std::vector<Diagnostic>& diagnostics) {
  Text reason = ToError(diagnostics).description;
  for (const Text& secret : settings.secrets) reason = Replace(reason, secret, "***");
  return Error(database_error::kConnection, "ODBC",
               "The account on the server (" + WithoutSecrets(settings.driver_text) + ") can't be opened: " + reason +
                   "\n" + Advice(diagnostics));
}

bool IsSqlServer(const Session& session) {
  std::u16string name(128, u'\0');
  SQLSMALLINT bytes = 0;
  const auto size = static_cast<SQLSMALLINT>(name.size() * sizeof(char16_t));
  if (!SQL_SUCCEEDED(SQLGetInfoW(session.get(), SQL_DBMS_NAME, ToSql(name), size, &bytes))) return false;
  return name.find(u"SQL Server") != std::u16string::npos;
}

}  // namespace

Settings Settings::Parse(const Text& connection_text) {
  Settings settings{{}, kLoginTimeout, kQueryTimeout, {}};
  std::vector<ConnectionKey> handed_on;
  for (ConnectionKey& key : ParseConnectionText(connection_text)) {
    if (key.Is(kLoginTimeoutKey)) {
      settings.login_timeout = Seconds(key);
    } else if (key.Is(kQueryTimeoutKey)) {
      settings.query_timeout = Seconds(key);
    } else {
      if (key.NamesSecret() && !key.value.empty()) settings.secrets.push_back(key.value);
      handed_on.push_back(std::move(key));
    }
  }
  settings.driver_text = JoinConnectionText(handed_on);
  return settings;
}

Link::Link(const Settings& settings)
    : environment_(OpenEnvironment()), session_(environment_.get()), query_timeout_(settings.query_timeout) {
  SQLSetConnectAttrW(session_.get(), SQL_ATTR_LOGIN_TIMEOUT, Number(settings.login_timeout), SQL_IS_UINTEGER);
  const std::u16string text = ToWide(settings.driver_text);
  const SQLRETURN outcome =
      SQLDriverConnectW(session_.get(), nullptr, ToSql(text), static_cast<SQLSMALLINT>(text.size()), nullptr, 0,
                        nullptr, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(outcome)) throw CannotConnect(settings, Diagnostics(SQL_HANDLE_DBC, session_.get()));
  counts_transactions_ = IsSqlServer(session_);
  // Some drivers ask such a server to cut long texts off.
  if (counts_transactions_) Run("set textsize 2147483647");
}

Link::~Link() {
  SQLEndTran(SQL_HANDLE_DBC, session_.get(), SQL_ROLLBACK);
  SQLDisconnect(session_.get());
}

bool Link::IsDead() const {
  SQLUINTEGER dead = SQL_CD_FALSE;
  const SQLRETURN outcome =
      SQLGetConnectAttrW(session_.get(), SQL_ATTR_CONNECTION_DEAD, &dead, SQL_IS_UINTEGER, nullptr);
  return SQL_SUCCEEDED(outcome) && dead == SQL_CD_TRUE;
}

RecordsetRef Link::Run(std::string_view text) {
  if (counts_transactions_) {
    const bool begins = ContainsIgnoreCase(text, "begin tran");
    nested_ = nested_ || begins;
    may_end_ = ContainsIgnoreCase(text, "rollback") || (!begins && ContainsIgnoreCase(text, "commit"));
  }
  const Statement statement(session_.get());
  SQLSetStmtAttrW(statement.get(), SQL_ATTR_QUERY_TIMEOUT, Number(query_timeout_), SQL_IS_UINTEGER);

  Ref<RowSet> first;
  std::optional<Error> refusal;
  const auto take = [&](SQLRETURN outcome) {
    if (outcome == SQL_NO_DATA) return;
    odbc::Check(statement, outcome);
    if (ColumnCount(statement) == 0) return;
    if (first) {
      SkipRows(statement);
    } else {
      first = ReadRows(statement);
    }
  };
  const std::u16string wide = ToWide(text);
  SQLRETURN outcome = SQLExecDirectW(statement.get(), ToSql(wide), static_cast<SQLINTEGER>(wide.size()));
  for (int refusals = 0; refusals < kMostRefusals;) {
    try {
      take(outcome);
    } catch (const Error& error) {
      if (!refusal) refusal = error;
      if (error.number == database_error::kConnection || error.number == database_error::kTimeout) break;
      ++refusals;
    }
    outcome = SQLMoreResults(statement.get());
    if (outcome == SQL_NO_DATA) break;
  }
  if (refusal) throw *refusal;
  return first ? OpenRecordset(first) : nullptr;
}

void Link::BeginTransaction() {
  nested_ = false;
  SetAutocommit(false);
}

void Link::Commit() {
  if (nested_) Run("while @@trancount > 1 commit tran");
  EndTransaction(SQL_COMMIT);
}

void Link::Rollback() {
  EndTransaction(SQL_ROLLBACK);
}

bool Link::TextEndedTransaction() {
  return may_end_ && TransactionIsGone();
}

bool Link::TransactionIsGone() {
  if (!counts_transactions_) return false;
  try {
    return EqualsNumber(Run("select @@trancount")->FieldValue(std::size_t{0}), 0);
  } catch (const Error&) {
    return true;
  }
}

void Link::LeaveTransactions() {
  SetAutocommit(true);
}

void Link::SetAutocommit(bool on) {
  const SQLULEN value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
  Check(SQLSetConnectAttrW(session_.get(), SQL_ATTR_AUTOCOMMIT, Number(value), SQL_IS_UINTEGER));
}

void Link::EndTransaction(SQLSMALLINT completion) {
  Check(SQLEndTran(SQL_HANDLE_DBC, session_.get(), completion));
}

void Link::Check(SQLRETURN outcome) const {
  if (!SQL_SUCCEEDED(outcome)) throw ToError(Diagnostics(SQL_HANDLE_DBC, session_.get()));
}

}  // namespace rebate::odbc
