#pragma once

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/catalog.h"

namespace rebate {

// What a statement was doing when a constraint stopped it, as the server's messages name it.
enum class Doing { Insert, Update, AlterTable };

// The server's error for what SQLite's constraint said of a statement on `table`: a Null where none may be, a key that
// is there already, a check that doesn't hold, an identity that left its type. `message` is sqlite3_errmsg, `path` the
// account's file.
Error ConstraintError(int extended_code, std::string_view message, const tsql::TableInfo& table, Doing doing,
                      const Text& path);

// "Arithmetic overflow error converting IDENTITY to data type int."
Error IdentityOverflow(const tsql::DataType& type);

// The name of the account's database, and the table's with it: "shop", "shop.dbo.t", "tempdb.dbo.#t".
Text DatabaseName(const Text& path);
Text FullName(const tsql::TableInfo& table, const Text& path);

}  // namespace rebate
