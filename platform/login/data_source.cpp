#include "platform/login/data_source.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/database/connection_text.h"
#include "platform/database/embedded/embedded_account.h"
#ifdef REBATE_HAS_ODBC
#include "platform/database/odbc/odbc_account.h"
#endif

namespace rebate {
namespace {

constexpr std::string_view kUserKey = "AppUser";
constexpr std::string_view kPathKey = "Data Source";
constexpr std::string_view kForms =
    "Name an embedded account by its path or as Data Source=<path>;AppUser=<user id>, and one on a server by an ODBC "
    "connection text with Driver= or DSN=.";

[[noreturn]] void Refuse(const Text& description) {
  throw Error(error_number::kInvalidCall, "DataSource", description);
}

Long UserId(const ConnectionKey& key) {
  constexpr Long kHighest = std::numeric_limits<std::int16_t>::max();
  Long id = 0;
  const char* end = key.value.data() + key.value.size();
  const auto [read, failure] = std::from_chars(key.value.data(), end, id);
  if (failure != std::errc() || read != end || id < 0 || id > kHighest) {
    Refuse("AppUser must be a whole number from 0 to " + std::to_string(kHighest) + ", not '" + key.value + "'.");
  }
  return id;
}

bool NamesDriver(const std::vector<ConnectionKey>& keys) {
  for (const ConnectionKey& key : keys) {
    if (key.Is("Driver") || key.Is("DSN")) return true;
  }
  return false;
}

// Takes our own key out of `keys`.
std::optional<ConnectionKey> Take(std::vector<ConnectionKey>& keys, std::string_view name) {
  std::optional<ConnectionKey> taken;
  std::erase_if(keys, [&](const ConnectionKey& key) {
    if (!key.Is(name)) return false;
    if (taken) Refuse("The connection text says " + Text(name) + " twice.");
    taken = key;
    return true;
  });
  return taken;
}

ConnectionRef ConnectOdbc([[maybe_unused]] const DataSource& source) {
#ifdef REBATE_HAS_ODBC
  return OpenOdbc(source.connection_text);
#else
  throw Error(database_error::kConnection, "DataSource",
              "This build reaches no account on a server, since it was made without ODBC: install an ODBC driver "
              "manager with its headers (on Debian the package unixodbc-dev) and build again with REBATE_ODBC=ON.");
#endif
}

}  // namespace

DataSource DataSource::Parse(std::string_view text) {
  DataSource source;
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) Refuse("No data source is given. " + Text(kForms));
  if (trimmed.find('=') == std::string_view::npos) {
    source.path = trimmed;
    return source;
  }
  std::vector<ConnectionKey> keys = ParseConnectionText(trimmed);
  if (const auto user = Take(keys, kUserKey)) source.app_user = UserId(*user);
  source.embedded = !NamesDriver(keys);
  if (!source.embedded) {
    source.connection_text = JoinConnectionText(keys);
    return source;
  }
  if (const auto path = Take(keys, kPathKey)) source.path = path->value;
  if (!keys.empty()) {
    Refuse("An embedded account knows no connection key '" + Text(keys.front().key) + "'. " + Text(kForms));
  }
  if (source.path.empty()) Refuse("The connection text names no account. " + Text(kForms));
  return source;
}

Text WithoutPasswords(std::string_view text) {
  return WithoutSecrets(text);
}

ConnectionRef Connect(const DataSource& source) {
  return source.embedded ? OpenEmbedded(source.path) : ConnectOdbc(source);
}

ConnectionRef ConnectForSetup(const DataSource& source) {
  if (source.embedded) return CreateEmbedded(source.path);
  ConnectionRef connection = ConnectOdbc(source);
  const RecordsetRef found =
      connection->Execute("select TABLE_NAME from INFORMATION_SCHEMA.TABLES where TABLE_NAME = 't_FL_SchemeList'");
  if (found && !found->Eof()) {
    Refuse(
        "The database holds an account already (it has the table t_FL_SchemeList); nothing was changed. Name an "
        "empty database.");
  }
  return connection;
}

AccountSetup::AccountSetup(const DataSource& source) {
  if (source.embedded) {
    embedded_ = std::make_unique<AccountInMaking>(source.path);
  } else {
    server_ = ConnectForSetup(source);
  }
}

AccountSetup::~AccountSetup() = default;

Connection& AccountSetup::connection() {
  return embedded_ ? embedded_->connection() : *server_;
}

void AccountSetup::Finish() {
  if (embedded_) embedded_->Finish();
}

}  // namespace rebate
