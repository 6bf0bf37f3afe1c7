#include "platform/database/embedded/table_rebuild.h"

#include "platform/database/tsql/print/definition.h"

namespace rebate {
namespace {

void PutAside(sqlite3* database, const Text& path, const tsql::TableInfo& table) {
  std::vector<Text> indexes;
  RowQuery rows(database, path,
                "SELECT name FROM " + table.SchemaName() +
                    ".sqlite_schema WHERE type='index' AND sql IS NOT NULL AND tbl_name=?1 COLLATE NOCASE",
                table.name);
  while (rows.Next()) indexes.push_back(rows.TextAt(0));
  for (const Text& index : indexes)
    Run(database, "DROP INDEX " + table.SchemaName() + '.' + tsql::SqlName(index), path);
  Run(database, "ALTER TABLE " + table.SqlName() + " RENAME TO " + tsql::SqlName(kOldRows), path);
}

Text CopyStatement(const tsql::TableInfo& table, const std::vector<ColumnCopy>& copies) {
  Text columns;
  Text expressions;
  for (const ColumnCopy& copy : copies) {
    columns += (columns.empty() ? "" : ",") + tsql::SqlName(copy.column);
    expressions += (expressions.empty() ? "" : ",") + copy.expression;
  }
  // Rows in the order of their numbers, which no index has.
  return "INSERT INTO " + table.SqlName() + '(' + columns + ") SELECT " + expressions + " FROM " + table.SchemaName() +
         '.' + tsql::SqlName(kOldRows) + " NOT INDEXED";
}

// Hands the count of SQLite's own row numbers from the old table to the new one.
void MoveSequence(sqlite3* database, const Text& path, const tsql::TableInfo& table) {
  if (table.counted_identity) return;
  const Text sequence = table.SchemaName() + ".sqlite_sequence";
  {
    RowQuery known(database, path,
                   "SELECT 1 FROM " + table.SchemaName() + ".sqlite_schema WHERE name='sqlite_sequence'");
    if (!known.Next()) return;
  }
  {
    RowQuery counted(database, path, "SELECT 1 FROM " + sequence + " WHERE name=?1", kOldRows);
    if (!counted.Next()) return;
  }
  RowQuery(database, path, "DELETE FROM " + sequence + " WHERE name=?1", table.name).Next();
  RowQuery(database, path, "UPDATE " + sequence + " SET name=?1 WHERE name=?2", table.name, kOldRows).Next();
}

}  // namespace

std::vector<Text> IndexStatements(sqlite3* database, const Text& path, const tsql::TableInfo& table) {
  std::vector<Text> statements;
  RowQuery rows(database, path,
                "SELECT sql FROM " + table.SchemaName() +
                    ".sqlite_schema WHERE type='index' AND sql IS NOT NULL AND tbl_name=?1 COLLATE NOCASE",
                table.name);
  while (rows.Next()) {
    Text sql = rows.TextAt(0);
    // SQLite keeps the text without the schema.
    constexpr std::string_view kWord = " INDEX ";
    sql.insert(sql.find(kWord) + kWord.size(), table.SchemaName() + '.');
    statements.push_back(std::move(sql));
  }
  return statements;
}

int RunConstrained(sqlite3* database, const Text& sql, const Text& path) {
  const int result = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK && (result & 0xFF) != SQLITE_CONSTRAINT) throw SqliteError(database, result, path);
  return result;
}

Rebuild RebuildTable(sqlite3* database, const Text& path, const tsql::TableInfo& table,
                     const std::vector<Text>& statements, const std::vector<ColumnCopy>& copies,
                     const std::vector<Text>& indexes) {
  PutAside(database, path, table);
  for (const Text& statement : statements) Run(database, statement, path);
  Rebuild rebuild;
  rebuild.result = RunConstrained(database, CopyStatement(table, copies), path);
  if (rebuild.result != SQLITE_OK) return rebuild;
  MoveSequence(database, path, table);
  Run(database, "DROP TABLE " + table.SchemaName() + '.' + tsql::SqlName(kOldRows), path);
  for (const Text& index : indexes) {
    rebuild.result = RunConstrained(database, index, path);
    if (rebuild.result != SQLITE_OK) return rebuild;
    ++rebuild.indexes_done;
  }
  return rebuild;
}

}  // namespace rebate
