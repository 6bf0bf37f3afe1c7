#pragma once

#include "platform/database/embedded/account_catalog.h"

namespace rebate {

// The server's error for what SQLite's constraint said: a Null where none may be, or a key that is there already.
Error ConstraintError(int extended_code, const Text& message, const tsql::Command& command, AccountCatalog& catalog);

}  // namespace rebate
