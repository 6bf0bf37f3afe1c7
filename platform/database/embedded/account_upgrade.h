#pragma once

#include "platform/database/embedded/sqlite_handles.h"

namespace rebate {

// What stands in an account's file beside the tables: version 1 kept amounts as floats, version 2 keeps them as
// decimals, and keys under their own names and kinds.
inline constexpr std::int64_t kAccountVersion = 2;

// The table in which an account counts identities, as a statement that makes it.
Text CounterTableStatement();

// Brings an account of version 1 to version 2, in one transaction; does nothing where another process has just done it.
// Amounts become the digits that were meant: the 15 that a float holds, rounded to the column's scale. Raises
// database_error::kConnection, naming the file, the table and what to do, and leaves the file as it was where it holds
// what can't be carried over: rows that are duplicates by now, a computed column other than a second name, a default
// that isn't a constant.
void UpgradeAccount(sqlite3* database, const Text& path);

}  // namespace rebate
