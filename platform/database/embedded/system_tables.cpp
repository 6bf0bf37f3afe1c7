#include "platform/database/embedded/system_tables.h"

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/system_rows.h"
#include "platform/database/embedded/table_reader.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

struct Source {
  AccountCatalog* catalog;
  const SystemTable* table;
};

// The structures that SQLite passes around begin with its own.
struct VirtualTable : sqlite3_vtab {
  explicit VirtualTable(const Source& of) : sqlite3_vtab{}, source(of) {}
  Source source;
};
struct VirtualCursor : sqlite3_vtab_cursor {
  VirtualCursor() : sqlite3_vtab_cursor{} {}
  std::vector<SystemRow> rows;
  std::size_t at = 0;
};

VirtualCursor* CursorOf(sqlite3_vtab_cursor* cursor) {
  return static_cast<VirtualCursor*>(cursor);
}

// A name that no table of the account has by accident.
Text ModuleName(const SystemTable& table) {
  return "server's " + Text(table.owner) + (table.owner.empty() ? "" : ".") + Text(table.name);
}

int Connect(sqlite3* database, void* data, int, const char* const*, sqlite3_vtab** table, char**) try {
  const auto& source = *static_cast<const Source*>(data);
  Text definition;
  for (const tsql::ColumnInfo& column : source.table->columns) {
    definition += (definition.empty() ? "CREATE TABLE x(" : ",") + tsql::SqlName(column.name) + ' ' +
                  Declaration(column.type) + tsql::CollationText(column.type);
  }
  const int result = sqlite3_declare_vtab(database, (definition + ')').c_str());
  if (result == SQLITE_OK) *table = new VirtualTable(source);
  return result;
} catch (const std::bad_alloc&) {
  return SQLITE_NOMEM;
}

int Disconnect(sqlite3_vtab* table) {
  delete static_cast<VirtualTable*>(table);
  return SQLITE_OK;
}

int BestIndex(sqlite3_vtab*, sqlite3_index_info* info) {
  info->estimatedCost = 10000;
  info->estimatedRows = 1000;
  return SQLITE_OK;
}

int Open(sqlite3_vtab*, sqlite3_vtab_cursor** cursor) {
  *cursor = new (std::nothrow) VirtualCursor;
  return *cursor != nullptr ? SQLITE_OK : SQLITE_NOMEM;
}

int Close(sqlite3_vtab_cursor* cursor) {
  delete CursorOf(cursor);
  return SQLITE_OK;
}

int Filter(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**) {
  auto* table = static_cast<VirtualTable*>(cursor->pVtab);
  try {
    CursorOf(cursor)->rows = table->source.table->rows(*table->source.catalog);
    CursorOf(cursor)->at = 0;
    return SQLITE_OK;
  } catch (const Error& error) {
    sqlite3_free(table->zErrMsg);
    table->zErrMsg = sqlite3_mprintf("%s", MarkedMessage(error).c_str());
    return SQLITE_ERROR;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

int Next(sqlite3_vtab_cursor* cursor) {
  ++CursorOf(cursor)->at;
  return SQLITE_OK;
}

int AtEnd(sqlite3_vtab_cursor* cursor) {
  return CursorOf(cursor)->at >= CursorOf(cursor)->rows.size() ? 1 : 0;
}

int GiveColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  const SystemCell& cell = CursorOf(cursor)->rows[CursorOf(cursor)->at][static_cast<std::size_t>(column)];
  if (const auto* number = std::get_if<std::int64_t>(&cell)) {
    sqlite3_result_int64(context, *number);
  } else if (const auto* text = std::get_if<Text>(&cell)) {
    sqlite3_result_text(context, text->data(), static_cast<int>(text->size()), SQLITE_TRANSIENT);
  } else {
    sqlite3_result_null(context);
  }
  return SQLITE_OK;
}

int GiveRowNumber(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
  *number = static_cast<sqlite3_int64>(CursorOf(cursor)->at) + 1;
  return SQLITE_OK;
}

// Without xCreate: the table is there without being made.
sqlite3_module MakeModule() {
  sqlite3_module module{};
  module.xConnect = Connect;
  module.xDisconnect = Disconnect;
  module.xBestIndex = BestIndex;
  module.xOpen = Open;
  module.xClose = Close;
  module.xFilter = Filter;
  module.xNext = Next;
  module.xEof = AtEnd;
  module.xColumn = GiveColumn;
  module.xRowid = GiveRowNumber;
  return module;
}

tsql::TablePtr Described(const SystemTable& table) {
  auto info = std::make_shared<tsql::TableInfo>();
  info->name = table.name;
  info->columns = table.columns;
  info->system_source = tsql::SqlName(ModuleName(table));
  info->signature = SignatureOf(*info);
  return info;
}

bool Means(const tsql::ObjectName& name, const SystemTable& table) {
  if (!name.database.empty() || !EqualsIgnoreCase(name.name, table.name)) return false;
  if (EqualsIgnoreCase(name.owner, table.owner)) return true;
  // The older ones are known under every owner that a server keeps them for.
  return table.owner.empty() && (EqualsIgnoreCase(name.owner, "dbo") || EqualsIgnoreCase(name.owner, "sys"));
}

}  // namespace

void RegisterSystemTables(sqlite3* database, AccountCatalog& catalog) {
  static const sqlite3_module module = MakeModule();
  for (const SystemTable& table : SystemTables()) {
    NeedDone(sqlite3_create_module_v2(database, ModuleName(table).c_str(), &module, new Source{&catalog, &table},
                                      [](void* source) { delete static_cast<Source*>(source); }));
  }
}

tsql::TablePtr FindSystemTable(const tsql::ObjectName& name) {
  for (const SystemTable& table : SystemTables()) {
    if (Means(name, table)) return Described(table);
  }
  return nullptr;
}

}  // namespace rebate
