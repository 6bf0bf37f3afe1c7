#pragma once

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/catalog.h"

namespace rebate {

class AccountCatalog;

// What a server tells of itself: information_schema.tables and .columns, sysobjects, syscolumns, sys.objects and
// sys.columns. They read the catalog each time that they are asked, and hold no temporary tables.

// Makes them known to SQLite. The catalog outlives the connection's statements.
void RegisterSystemTables(sqlite3* database, AccountCatalog& catalog);

// The one of the name; null where there is none.
tsql::TablePtr FindSystemTable(const tsql::ObjectName& name);

}  // namespace rebate
