#include "platform/database/odbc/handle.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/values/ascii.h"

namespace rebate::odbc {
namespace {

// `[Vendor][Driver][Server]text` -> `text`. The server's own words may start with a bracket, so no more than the three
// names are taken, none behind the server's.
std::string_view WithoutComponents(std::string_view message) {
  for (int component = 0; component < 3 && message.starts_with('['); ++component) {
    const std::size_t close = message.find(']');
    if (close == std::string_view::npos) break;
    const bool is_server = message.substr(0, close + 1) == "[SQL Server]";
    message.remove_prefix(close + 1);
    if (is_server) break;
  }
  return TrimWhite(message);
}

bool Any(const std::vector<Diagnostic>& diagnostics, Matter matter) {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [&](const Diagnostic& diagnostic) { return MatterOf(diagnostic) == matter; });
}

struct StateMatter {
  std::string_view prefix;
  Matter matter;
};
constexpr StateMatter kStates[] = {
    {"08", Matter::Lost},
    {"HYT01", Matter::Lost},
    {"57P0", Matter::Lost},
    {"40", Matter::Conflict},
    {"HYT00", Matter::Timeout},
    {"55P03", Matter::Timeout},
    {"23", Matter::Constraint},
    {"28", Matter::Login},
    {"3D", Matter::Database},
    // Not every driver has the server's "cancelled" translated; nobody but the time limit cancels a statement here.
    {"57014", Matter::Timeout},
};

struct NativeMatter {
  SQLINTEGER number;
  Matter matter;
};
constexpr NativeMatter kNatives[] = {
    {1205, Matter::Conflict},   {3960, Matter::Conflict},   {3961, Matter::Conflict},  {1222, Matter::Timeout},
    {515, Matter::Constraint},  {547, Matter::Constraint},  {550, Matter::Constraint}, {1505, Matter::Constraint},
    {2601, Matter::Constraint}, {2627, Matter::Constraint}, {18452, Matter::Login},    {18456, Matter::Login},
    {18470, Matter::Login},     {18486, Matter::Login},     {18487, Matter::Login},    {18488, Matter::Login},
    {911, Matter::Database},    {916, Matter::Database},    {4060, Matter::Database},  {4064, Matter::Database},
};

}  // namespace

// A login that is refused is often told with the state of a connection that failed.
Matter MatterOf(const Diagnostic& diagnostic) {
  const std::string_view state = diagnostic.state;
  const auto native = std::find_if(std::begin(kNatives), std::end(kNatives),
                                   [&](const NativeMatter& one) { return one.number == diagnostic.native; });
  const bool of_login =
      native != std::end(kNatives) && (native->matter == Matter::Login || native->matter == Matter::Database);
  if (of_login) return native->matter;
  for (const StateMatter& one : kStates) {
    if (state.starts_with(one.prefix)) return one.matter;
  }
  return native != std::end(kNatives) ? native->matter : Matter::Statement;
}

std::vector<Diagnostic> Diagnostics(SQLSMALLINT kind, SQLHANDLE handle) {
  constexpr SQLSMALLINT kMost = 100;
  std::vector<Diagnostic> diagnostics;
  for (SQLSMALLINT record = 1; record < kMost; ++record) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLRETURN outcome = SQL_SUCCESS;
    const Text message = ReadGrowing([&](std::u16string& buffer) {
      SQLSMALLINT length = 0;
      outcome = SQLGetDiagRecW(kind, handle, record, state, &native, ToSql(buffer),
                               static_cast<SQLSMALLINT>(buffer.size()), &length);
      return length;
    });
    if (!SQL_SUCCEEDED(outcome)) break;
    diagnostics.push_back({FromWide({FromSql(state), 5}), native, Text(WithoutComponents(message))});
  }
  return diagnostics;
}

ServerError ToError(const std::vector<Diagnostic>& diagnostics) {
  using Effect = ServerError::Effect;
  Text description;
  std::string_view before;
  for (const Diagnostic& diagnostic : diagnostics) {
    const bool repeats = diagnostic.message == std::exchange(before, diagnostic.message);
    if (repeats || diagnostic.message.empty()) continue;
    if (!description.empty()) description += '\n';
    description += diagnostic.message;
  }
  if (description.empty()) description = "The ODBC driver failed without saying why.";
  if (Any(diagnostics, Matter::Conflict)) {
    const bool lost = Any(diagnostics, Matter::Lost);
    return {database_error::kConnection, description + '\n' + Text(kMayTryAgain),
            lost ? Effect::ConnectionLost : Effect::UnitUndone};
  }
  if (Any(diagnostics, Matter::Lost)) return {database_error::kConnection, description, Effect::ConnectionLost};
  const Long number = Any(diagnostics, Matter::Timeout)      ? database_error::kTimeout
                      : Any(diagnostics, Matter::Constraint) ? database_error::kConstraint
                                                             : database_error::kStatement;
  return {number, description, Effect::StatementRefused};
}

Environment OpenEnvironment() {
  Environment environment(SQL_NULL_HANDLE);
  SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  return environment;
}

}  // namespace rebate::odbc
