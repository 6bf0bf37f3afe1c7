#pragma once

#include <chrono>

#include "platform/database/connection.h"
#include "platform/values/types.h"

namespace rebate {

// How long a statement waits for another process to end its writing.
inline constexpr std::chrono::milliseconds kLockWait{20'000};

// Opens the account in the file `path`. Raises database_error::kConnection, naming the path and what to do, where there
// is no account that can be read and written. An account that an older version made is brought to this one.
ConnectionRef OpenEmbedded(const Text& path, std::chrono::milliseconds lock_wait = kLockWait);

// Whether opening the account would bring it to this version first. Raises what OpenEmbedded raises.
bool IsOfFormerVersion(const Text& path);

// The engine with the version that runs, such as `SQLite 3.40.1`.
Text EngineVersion();

// Makes a new account, empty of tables, in the file `path` and opens it. Raises database_error::kConnection, leaving
// everything as it was, where something stands there already or the file can't be made. Only its owner can read the
// file.
ConnectionRef CreateEmbedded(const Text& path, std::chrono::milliseconds lock_wait = kLockWait);

// A new account while it is filled: it stands under a name of its own in the directory of `path`, so that whatever ends
// the process half way leaves nothing at `path`.
class AccountInMaking {
 public:
  // Raises what CreateEmbedded raises.
  explicit AccountInMaking(const Text& path, std::chrono::milliseconds lock_wait = kLockWait);
  AccountInMaking(const AccountInMaking&) = delete;
  AccountInMaking& operator=(const AccountInMaking&) = delete;
  // Removes what wasn't finished.
  ~AccountInMaking();

  Connection& connection() { return *connection_; }
  // Closes the connection, which nobody else may hold, and puts the account at its place. Raises
  // database_error::kConnection where something has come to stand there in the meantime.
  void Finish();

 private:
  Text path_;
  Text making_;  // empty when it is finished
  ConnectionRef connection_;
};

}  // namespace rebate
