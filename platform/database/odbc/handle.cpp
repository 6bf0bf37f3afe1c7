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

bool AnyState(const std::vector<Diagnostic>& diagnostics, std::string_view prefix) {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [&](const Diagnostic& diagnostic) { return diagnostic.state.starts_with(prefix); });
}

Long Number(const std::vector<Diagnostic>& diagnostics) {
  for (const std::string_view lost : {"08", "HYT01", "40"}) {
    if (AnyState(diagnostics, lost)) return database_error::kConnection;
  }
  // Not every driver has the server's "cancelled" translated; nobody but the time limit cancels a statement here.
  if (AnyState(diagnostics, "HYT00") || AnyState(diagnostics, "57014")) return database_error::kTimeout;
  if (AnyState(diagnostics, "23")) return database_error::kConstraint;
  return database_error::kStatement;
}

}  // namespace

std::vector<Diagnostic> Diagnostics(SQLSMALLINT kind, SQLHANDLE handle) {
  constexpr SQLSMALLINT kMost = 100;
  std::vector<Diagnostic> diagnostics;
  for (SQLSMALLINT record = 1; record < kMost; ++record) {
    SQLWCHAR state[6] = {};
    SQLRETURN outcome = SQL_SUCCESS;
    const Text message = ReadGrowing([&](std::u16string& buffer) {
      SQLINTEGER native = 0;
      SQLSMALLINT length = 0;
      outcome = SQLGetDiagRecW(kind, handle, record, state, &native, ToSql(buffer),
                               static_cast<SQLSMALLINT>(buffer.size()), &length);
      return length;
    });
    if (!SQL_SUCCEEDED(outcome)) break;
    diagnostics.push_back({FromWide({FromSql(state), 5}), Text(WithoutComponents(message))});
  }
  return diagnostics;
}

Error ToError(const std::vector<Diagnostic>& diagnostics) {
  Text description;
  std::string_view before;
  for (const Diagnostic& diagnostic : diagnostics) {
    const bool repeats = diagnostic.message == std::exchange(before, diagnostic.message);
    if (repeats || diagnostic.message.empty()) continue;
    if (!description.empty()) description += '\n';
    description += diagnostic.message;
  }
  if (description.empty()) description = "The ODBC driver failed without saying why.";
  return Error(Number(diagnostics), "ODBC", description);
}

}  // namespace rebate::odbc
