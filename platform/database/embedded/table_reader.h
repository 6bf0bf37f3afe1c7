#pragma once

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/catalog.h"

namespace rebate {

// The account's table of that name as its file tells it; null where there is none. Raises what keeps the file from
// being read.
tsql::TablePtr ReadTable(sqlite3* database, const Text& path, const Text& name);

// The text that made the table, as the file or the temporary database keeps it.
Text ReadDefinition(sqlite3* database, const Text& path, const tsql::TableInfo& table);

// A number that equal definitions share.
std::uint64_t SignatureOf(const tsql::TableInfo& table);

}  // namespace rebate
