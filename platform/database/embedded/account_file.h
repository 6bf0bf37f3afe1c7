#pragma once

#include <chrono>
#include <system_error>

#include "platform/database/embedded/sqlite_handles.h"

// The file of an account, before anything is known of what stands in it.
namespace rebate {

// Marks a SQLite file as an account.
inline constexpr std::int64_t kApplicationId = 0x52424154;

// Raises database_error::kConnection, naming the path and what to do, where no account can be, before SQLite touches
// anything there.
void CheckAccountFile(const Text& path);
// Opens the file with all functions and collations that an account's tables name; raises SqliteError.
DatabaseHandle OpenAccountFile(const Text& path, std::chrono::milliseconds lock_wait);
// Gives the version of the account. Raises database_error::kConnection where the database is none, or was made by a
// newer version; it is left untouched.
std::int64_t NeedAccount(sqlite3* database, const Text& path);
// Raises database_error::kConnection where a journal stands at `path` that another file has left, or that is in use: it
// would be taken for a part of the file that comes to stand there.
void RefuseLeftJournal(const Text& path);
// Removes the file and what SQLite keeps beside it.
void RemoveAccountFiles(const Text& path);

// Each raises database_error::kConnection: with the description; since something stands at the path; since the account
// can't be made there.
[[noreturn]] void RefuseAccount(Text description);
[[noreturn]] void RefuseTakenPath(const Text& path);
[[noreturn]] void RefuseAccountMaking(const Text& path, const std::error_code& error);

}  // namespace rebate
