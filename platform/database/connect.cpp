#include "platform/database/connect.h"

#include "platform/automation/error.h"
#include "platform/database/embedded/embedded_account.h"
#include "platform/database/error_numbers.h"
#ifdef REBATE_HAS_ODBC
#include "platform/database/odbc/odbc_account.h"
#endif

namespace rebate {
namespace {

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

ConnectionRef Connect(const DataSource& source) {
  return source.embedded ? OpenEmbedded(source.path) : ConnectOdbc(source);
}

bool NeedsUpgrade(const DataSource& source) {
  return source.embedded && IsOfFormerVersion(source.path);
}

std::vector<Text> StoreVersions() {
  std::vector<Text> versions = {EngineVersion()};
#ifdef REBATE_HAS_ODBC
  versions.push_back(ManagerVersion());
#endif
  return versions;
}

ConnectionRef ConnectForSetup(const DataSource& source) {
  if (source.embedded) return CreateEmbedded(source.path);
  ConnectionRef connection = ConnectOdbc(source);
  const RecordsetRef found =
      connection->Execute("select TABLE_NAME from INFORMATION_SCHEMA.TABLES where TABLE_NAME = 't_FL_SchemeList'");
  if (found && !found->Eof()) {
    throw Error(
        error_number::kInvalidCall, "DataSource",
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
