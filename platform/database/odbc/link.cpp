#include "platform/database/odbc/link.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "platform/automation/conversion.h"
#include "platform/database/connection_text.h"
#include "platform/database/odbc/driver_text.h"
#include "platform/database/odbc/result_reader.h"
#include "platform/values/text.h"

namespace rebate::odbc {
namespace {

constexpr std::string_view kLoginTimeoutKey = "Login Timeout";
constexpr std::string_view kQueryTimeoutKey = "Query Timeout";
constexpr std::string_view kSerializable = "set transaction isolation level serializable";
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

SQLPOINTER Number(SQLULEN value) {
  return reinterpret_cast<SQLPOINTER>(value);
}

bool AnyOf(const std::vector<Diagnostic>& diagnostics, Matter matter, std::string_view words) {
  return std::any_of(diagnostics.begin(), diagnostics.end(), [&](const Diagnostic& diagnostic) {
    return MatterOf(diagnostic) == matter || ContainsIgnoreCase(diagnostic.message, words);
  });
}

Text Advice(const std::vector<Diagnostic>& diagnostics) {
  for (const Diagnostic& diagnostic : diagnostics) {
    if (diagnostic.state.starts_with("IM") || diagnostic.message.find("Can't open lib") != Text::npos) {
      return "Name a registered driver (odbcinst -q -d lists them) or the path of its library as Driver=.";
    }
  }
  // Some drivers have no state for these, and the words of the server alone.
  if (AnyOf(diagnostics, Matter::Database, "database \"")) {
    return "The server was reached: check the name behind Database=, and that the user may open that database.";
  }
  if (AnyOf(diagnostics, Matter::Login, "authentication failed")) {
    return "The server was reached: check the user and the password.";
  }
  return "Check that the server runs, that its name and port are right, and that it can be reached from here.";
}

Error CannotConnect(const Settings& settings, const std::vector<Diagnostic>& diagnostics) {
  return Error(database_error::kConnection, "ODBC",
               "The account on the server (" + WithoutSecrets(settings.text) + ") can't be opened: " +
                   WithoutSecrets(ToError(diagnostics).description) + "\n" + Advice(diagnostics));
}

// The kind of server, as the driver names it; empty where it doesn't.
std::u16string ServerKind(const Session& session) {
  std::u16string name(128, u'\0');
  SQLSMALLINT bytes = 0;
  const auto size = static_cast<SQLSMALLINT>(name.size() * sizeof(char16_t));
  if (!SQL_SUCCEEDED(SQLGetInfoW(session.get(), SQL_DBMS_NAME, ToSql(name), size, &bytes))) return {};
  return name;
}

}  // namespace

Settings Settings::Parse(const Text& connection_text) {
  Settings settings;
  std::vector<ConnectionKey> handed_on;
  bool has_password = false;
  const auto name_place = [&](Text& place, const ConnectionKey& key) {
    if (key.value.empty()) {
      throw Error(error_number::kInvalidCall, "DataSource", Text(key.key) + " names nothing.");
    }
    place = key.value;
  };
  for (ConnectionKey& key : ParseConnectionText(connection_text)) {
    if (key.Is(kLoginTimeoutKey)) {
      settings.login_timeout = Seconds(key);
    } else if (key.Is(kQueryTimeoutKey)) {
      settings.query_timeout = Seconds(key);
    } else if (key.Is(kPasswordEnvironmentKey)) {
      name_place(settings.password_variable, key);
    } else if (key.Is(kPasswordFileKey)) {
      name_place(settings.password_file, key);
    } else {
      has_password = has_password || key.Is("PWD") || key.Is("Password");
      handed_on.push_back(std::move(key));
    }
  }
  if (has_password + !settings.password_variable.empty() + !settings.password_file.empty() > 1) {
    throw Error(error_number::kInvalidCall, "DataSource",
                "The connection text says the password twice: one of PWD, PasswordEnv and PasswordFile is enough.");
  }
  settings.text = JoinConnectionText(handed_on);
  return settings;
}

Link::Link(const Settings& settings)
    : environment_(OpenEnvironment()), session_(environment_.get()), query_timeout_(settings.query_timeout) {
  SQLSetConnectAttrW(session_.get(), SQL_ATTR_LOGIN_TIMEOUT, Number(settings.login_timeout), SQL_IS_UINTEGER);
  Connect(settings);
  characters_.emplace(session_);
  const std::u16string kind = ServerKind(session_);
  is_sql_server_ = kind.find(u"SQL Server") != std::u16string::npos;
  is_postgres_ = kind.find(u"PostgreSQL") != std::u16string::npos;
  if (is_sql_server_) PrepareSqlServer();
  Isolate();
}

void Link::Connect(const Settings& settings) {
  const std::vector<ConnectionKey> keys = ParseConnectionText(settings.text);
  const Braces braces = BracesOf(DriverLibrary(environment_, keys));
  Text text = DriverText(keys, braces);
  if (!settings.password_variable.empty()) {
    text += DriverKey("PWD", PasswordFromEnvironment(settings.password_variable), braces);
  } else if (!settings.password_file.empty()) {
    text += DriverKey("PWD", PasswordFromFile(settings.password_file), braces);
  }
  const std::u16string wide = ToWide(text);
  const SQLRETURN outcome =
      SQLDriverConnectW(session_.get(), nullptr, ToSql(wide), static_cast<SQLSMALLINT>(wide.size()), nullptr, 0,
                        nullptr, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(outcome)) throw CannotConnect(settings, Diagnostics(SQL_HANDLE_DBC, session_.get()));
}

void Link::Isolate() {
  SQLUINTEGER levels = 0;
  SQLGetInfoW(session_.get(), SQL_TXN_ISOLATION_OPTION, &levels, sizeof(levels), nullptr);
  const bool known = (levels & SQL_TXN_SERIALIZABLE) != 0;
  isolated_ = known && SQL_SUCCEEDED(SQLSetConnectAttrW(session_.get(), SQL_ATTR_TXN_ISOLATION,
                                                        Number(SQL_TXN_SERIALIZABLE), SQL_IS_UINTEGER));
  // A SQL Server's session keeps what it is told; elsewhere the statement holds for its transaction.
  if (!isolated_ && is_sql_server_) IsolateByStatement();
  isolates_each_ = !isolated_;
}

void Link::IsolateByStatement() {
  Run(kSerializable, {});
  isolated_ = true;
}

void Link::PrepareSqlServer() {
  SetOptions();
  const Ref<RowSet> page = RunWhereKnown(
      "select cast(collationproperty(cast(databasepropertyex(db_name(), 'Collation') as nvarchar(128)), 'CodePage') "
      "as int)");
  if (page && page->row_count() == 1 && !page->Cell(0, 0).IsNull()) {
    characters_->SetServerCodePage(ToLong(page->Cell(0, 0)));
  }
}

// An index on a computed column takes no row from a session with other options than these, and some drivers ask for
// others, or to cut long texts off. A wait for a lock is ended by the server, shortly before the driver would: on a
// server that doesn't answer it at once, a driver waits as long again for its cancellation.
void Link::SetOptions() {
  const SQLULEN milliseconds = query_timeout_ * 1000;
  const Text lock_wait =
      query_timeout_ == 0 ? "-1" : std::to_string(milliseconds - std::min<SQLULEN>(500, milliseconds / 10));
  std::vector<Text> options = {"set textsize 2147483647",       "set dateformat mdy",
                               "set lock_timeout " + lock_wait, "set implicit_transactions off",
                               "set numeric_roundabort off",    "set nocount off"};
  for (const char* option :
       {"ansi_nulls", "ansi_padding", "ansi_warnings", "arithabort", "concat_null_yields_null", "quoted_identifier"}) {
    options.push_back("set " + Text(option) + " on");
  }
  Text together;
  for (const Text& option : options) together += (together.empty() ? "" : " ") + option;
  try {
    Run(together, {});
  } catch (const ServerError& error) {
    if (error.effect != ServerError::Effect::StatementRefused) throw;
    for (const Text& option : options) RunWhereKnown(option);
  }
}

// Not every server that speaks the protocol knows all of the language.
Ref<RowSet> Link::RunWhereKnown(std::string_view text) {
  try {
    return Run(text, {});
  } catch (const ServerError& error) {
    if (error.effect != ServerError::Effect::StatementRefused) throw;
    return nullptr;
  }
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

namespace {

void TellCount(const Statement& statement, BatchListener& listener) {
  SQLLEN count = -1;  // as drivers tell of a statement that counts none
  if (SQL_SUCCEEDED(SQLRowCount(statement.get(), &count)) && count >= 0) listener.Affected(count);
}

}  // namespace

template <typename Take>
Link::Progress Link::RunThrough(std::string_view text, Take take) {
  const Statement statement(session_.get());
  SQLSetStmtAttrW(statement.get(), SQL_ATTR_QUERY_TIMEOUT, Number(query_timeout_), SQL_IS_UINTEGER);
  const std::u16string wide = ToWide(text);
  SQLRETURN outcome = SQLExecDirectW(statement.get(), ToSql(wide), static_cast<SQLINTEGER>(wide.size()));
  Progress progress;
  for (int refusals = 0; refusals < kMostRefusals;) {
    try {
      if (outcome != SQL_NO_DATA) odbc::Check(statement, outcome);
      take(statement, outcome == SQL_NO_DATA);
      if (!progress.refusal) ++progress.results;
    } catch (const Error& error) {
      if (!progress.refusal) progress.refusal = std::current_exception();
      if (error.number == database_error::kConnection || error.number == database_error::kTimeout) break;
      ++refusals;
    }
    outcome = SQLMoreResults(statement.get());
    if (outcome == SQL_NO_DATA) break;
  }
  return progress;
}

Link::Progress Link::RunThrough(std::string_view text) {
  return RunThrough(text, [](const Statement& statement, bool changed_nothing) {
    if (!changed_nothing && ColumnCount(statement) > 0) SkipRows(statement);
  });
}

Ref<RowSet> Link::Run(std::string_view text, const StatementTraits& traits, BatchListener* listener) {
  characters_->Sending(text);
  if (is_sql_server_) {
    nested_ = nested_ || traits.begins_transaction;
    may_end_ = traits.ends_transaction;
    isolated_ = isolated_ && !traits.sets_isolation;
  }
  Ref<RowSet> first;
  const Progress progress = RunThrough(text, [&](const Statement& statement, bool changed_nothing) {
    if (changed_nothing) {
      if (listener != nullptr) listener->Affected(0);
      return;
    }
    if (ColumnCount(statement) == 0) {
      if (listener != nullptr) TellCount(statement, *listener);
      return;
    }
    if (first && listener == nullptr) return SkipRows(statement);
    const Ref<RowSet> rows = ReadRows(statement);
    if (!first) first = rows;
    if (listener == nullptr) return;
    characters_->Received(*rows);
    listener->Rows(OpenRecordset(rows));
  });
  if (progress.refusal) std::rethrow_exception(progress.refusal);
  if (first) characters_->Received(*first);
  return first;
}

bool Link::MayJoin(std::string_view insert) const {
  if (!is_postgres_ && !is_sql_server_) return false;
  // A PostgreSQL may be set to take one for an escape, and see the end of the literal elsewhere.
  if (is_postgres_ && insert.find('\\') != std::string_view::npos) return false;
  try {
    characters_->Sending(insert);
    return true;
  } catch (const Error&) {
    return false;
  }
}

std::optional<Link::Refusal> Link::RunJoined(std::span<const Text> inserts) {
  Text joined;
  for (const Text& insert : inserts) joined.append(insert).append(";\r\n");
  const Progress progress = RunThrough(joined);
  if (!progress.refusal) return std::nullopt;
  if (is_sql_server_) return Refusal{std::min(progress.results, inserts.size() - 1), progress.refusal};
  return Refusal{FindRefused(inserts, progress.refusal), progress.refusal};
}

// Here the joined text was undone as a whole, and its answer doesn't tell which of the texts it was: each by itself
// does. Where the transaction went with it, nothing can be found out any more.
std::size_t Link::FindRefused(std::span<const Text> inserts, const std::exception_ptr& refusal) {
  try {
    std::rethrow_exception(refusal);
  } catch (const Error& error) {
    if (error.number == database_error::kConnection || error.number == database_error::kTimeout) return 0;
  }
  for (std::size_t at = 0; at < inserts.size(); ++at) {
    if (RunThrough(inserts[at]).refusal) return at;
  }
  return 0;
}

void Link::BeginTransaction() {
  nested_ = false;
  if (!isolated_ && !isolates_each_) IsolateByStatement();
  SetAutocommit(false);
  if (isolates_each_) Run(kSerializable, {});
}

void Link::Commit() {
  if (nested_) Run("while @@trancount > 1 commit tran", {});
  EndTransaction(SQL_COMMIT);
}

void Link::Rollback() {
  EndTransaction(SQL_ROLLBACK);
}

bool Link::TextEndedTransaction() {
  return may_end_ && TransactionIsGone();
}

bool Link::TransactionIsGone() {
  if (!is_sql_server_) return false;
  try {
    const Ref<RowSet> open = Run("select @@trancount", {});
    return open && open->row_count() == 1 && EqualsNumber(open->Cell(0, 0), 0);
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
