#pragma once

#include <chrono>

#include "platform/automation/types.h"
#include "platform/database/connection.h"

namespace rebate {

// How long a statement waits for another process to end its writing.
inline constexpr std::chrono::milliseconds kLockWait{20'000};

// Opens the account in the file `path`. Raises database_error::kConnection, naming the path and what to do, where there
// is no account that can be read and written.
ConnectionRef OpenEmbedded(const Text& path, std::chrono::milliseconds lock_wait = kLockWait);

// Makes a new account, empty of tables, in the file `path` and opens it. Raises database_error::kConnection, leaving
// everything as it was, where something stands there already or the file can't be made.
ConnectionRef CreateEmbedded(const Text& path, std::chrono::milliseconds lock_wait = kLockWait);

}  // namespace rebate
