#pragma once

#include <memory>
#include <vector>

#include "platform/database/connection.h"
#include "platform/database/data_source.h"

// The one place that knows which store answers for a data source.
namespace rebate {

// Opens a connection. Raises, naming the path or the server and what to do, where there is no account to open.
ConnectionRef Connect(const DataSource& source);

// Whether Connect would change the account's file, since an older version made it. Raises what Connect raises where
// there is no such file.
bool NeedsUpgrade(const DataSource& source);

// The stores that this build reaches accounts by, each with its version.
std::vector<Text> StoreVersions();

// Makes a new embedded account file, empty of tables, and opens it, or opens an empty server database; refuses,
// touching nothing, where something stands there already.
ConnectionRef ConnectForSetup(const DataSource& source);

class AccountInMaking;

// A new account from its making to its last table. What ends the process half way leaves nothing that is an account at
// the path of an embedded one; on a server, what its transactions left.
class AccountSetup {
 public:
  // Raises what ConnectForSetup raises.
  explicit AccountSetup(const DataSource& source);
  AccountSetup(const AccountSetup&) = delete;
  AccountSetup& operator=(const AccountSetup&) = delete;
  // Removes an embedded account that wasn't finished.
  ~AccountSetup();

  Connection& connection();
  // The account is whole: it stands at its place from then on.
  void Finish();

 private:
  std::unique_ptr<AccountInMaking> embedded_;
  ConnectionRef server_;
};

}  // namespace rebate
