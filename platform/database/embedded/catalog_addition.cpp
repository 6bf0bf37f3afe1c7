#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/constraint_error.h"
#include "platform/database/embedded/table_reader.h"
#include "platform/database/embedded/table_rebuild.h"
#include "platform/values/ascii.h"

// How the account's catalog adds keys, indexes, columns and checks to a table that holds rows.
namespace rebate {
namespace {

using tsql::ColumnDraft;
using tsql::ColumnInfo;
using tsql::KeyInfo;
using tsql::TableInfo;

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

// The first values that stand in two rows, as the server writes them.
Text DuplicateValues(sqlite3* database, const Text& path, const KeyInfo& key, const TableInfo& table) {
  Text columns;
  for (const Text& column : key.columns) columns += (columns.empty() ? "" : ",") + tsql::SqlName(column);
  RowQuery rows(
      database, path,
      "SELECT " + columns + " FROM " + table.SqlName() + " GROUP BY " + columns + " HAVING count(*)>1 LIMIT 1");
  Text values;
  if (!rows.Next()) return values;
  for (int i = 0; i < static_cast<int>(key.columns.size()); ++i) {
    values += (i == 0 ? "" : ", ") + (rows.IsNull(i) ? Text("<NULL>") : rows.TextAt(i));
  }
  return values;
}

}  // namespace

void AccountCatalog::MakeKeys(const TableInfo& table, std::size_t first) {
  for (std::size_t i = first; i < table.keys.size(); ++i) {
    const KeyInfo& key = table.keys[i];
    for (const Text& statement : KeyStatements(key, table)) {
      if (RunConstrained(database_, statement, path_) == SQLITE_OK) continue;
      Refuse(
          "The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo." +
          table.name + "' and the index name '" + key.name + "'. The duplicate key value is (" +
          DuplicateValues(database_, path_, key, table) + ").");
    }
  }
}

void AccountCatalog::Add(const tsql::TableDraft& draft) {
  const tsql::TablePtr table = Find(draft.name);
  if (!table) {
    Refuse("Cannot find the object \"" + tsql::WrittenName(draft.name) +
           "\" because it does not exist or you do not have permissions.");
  }
  if (table->view || !table->system_source.empty()) {
    Refuse("Cannot alter '" + table->name + "' because it is not a table.");
  }
  RefuseTakenNames(draft);
  TableInfo extended = ExtendedInfo(*table, draft);
  RefuseMissingValues(draft, *table, extended);
  if (const auto statements = AddStatements(draft, extended)) {
    for (const Text& statement : *statements) Run(database_, statement, path_);
  } else {
    AddByRebuild(draft, *table, extended);
  }
  MakeKeys(extended, table->keys.size());
  Change(std::move(extended));
}

void AccountCatalog::RefuseMissingValues(const tsql::TableDraft& draft, const TableInfo& table,
                                         const TableInfo& extended) {
  for (const ColumnDraft& added : draft.columns) {
    const ColumnInfo& column = *extended.FindColumn(added.info.name);
    if (column.nullable || column.has_default || column.identity || column.computed) continue;
    if (!AskNumber("SELECT 1 FROM " + table.SqlName() + " LIMIT 1")) return;
    Refuse(
        "ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition specified, "
        "or "
        "the column being added is an identity or timestamp column, or alternatively if none of the previous "
        "conditions "
        "are satisfied the table must be empty to allow addition of this column. Column '" +
        column.name + "' cannot be added to non-empty table '" + table.name +
        "' because it does not satisfy these conditions.");
  }
}

void AccountCatalog::AddByRebuild(const tsql::TableDraft& draft, const TableInfo& table, const TableInfo& extended) {
  const std::vector<Text> indexes = IndexStatements(database_, path_, table);
  std::vector<Text> statements{ExtendedStatement(ReadDefinition(database_, path_, table), draft, extended)};
  if (Text counter = CounterStatement(draft, extended); !counter.empty()) statements.push_back(std::move(counter));
  std::vector<ColumnCopy> copies;
  for (const ColumnInfo& column : table.columns) {
    if (!column.computed) copies.push_back({column.name, tsql::SqlName(column.name)});
  }
  for (const ColumnDraft& added : draft.columns) {
    const ColumnInfo& column = *extended.FindColumn(added.info.name);
    // A server gives the default to rows that are there only where they need one.
    if (column.nullable && !column.computed) copies.push_back({column.name, "NULL"});
  }
  // The rows may draw numbers from the new identity.
  Change(extended);
  const Rebuild rebuild = RebuildTable(database_, path_, extended, statements, copies, indexes);
  if (rebuild.result != SQLITE_OK) {
    throw ConstraintError(rebuild.result, sqlite3_errmsg(database_), extended, Doing::AlterTable, path_);
  }
}

}  // namespace rebate
