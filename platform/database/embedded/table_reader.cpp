#include "platform/database/embedded/table_reader.h"

#include <functional>

#include "platform/database/tsql/print/definition.h"

namespace rebate {
namespace {

using tsql::ColumnInfo;
using tsql::KeyInfo;
using tsql::TableInfo;

// SQLite tells the type of a computed column with words behind it.
tsql::DataType DeclaredType(std::string_view declared) {
  return tsql::ParseDeclaration(declared.substr(0, declared.find(" GENERATED ALWAYS")))
      .value_or(tsql::TextType(tsql::TypeKind::NVarChar, tsql::DataType::kMaxLength));
}

void ReadColumns(sqlite3* database, const Text& path, TableInfo& table, std::string_view definition) {
  RowQuery rows(database, path,
                "SELECT name, type, \"notnull\", pk, hidden, dflt_value FROM pragma_table_xinfo(?1, 'main')",
                table.name);
  while (rows.Next()) {
    ColumnInfo column;
    column.name = rows.TextAt(0);
    column.type = DeclaredType(rows.TextAt(1));
    const bool row_number = rows.NumberAt(3) != 0;
    const Text default_sql = rows.TextAt(5);
    const bool counted = default_sql.starts_with(tsql::kNextIdentity);
    column.identity = row_number || counted;
    table.counted_identity = table.counted_identity || counted;
    column.nullable = rows.NumberAt(2) == 0 && !column.identity;
    column.computed = rows.NumberAt(4) != 0;
    column.has_default = !rows.IsNull(5) && !counted;
    if (column.has_default) column.default_sql = default_sql;
    if (column.computed) column.alias_of = AliasOf(definition, column);
    if (row_number) {
      if (Text key = RowNumberKey(definition, column); !key.empty()) {
        table.keys.push_back({std::move(key), KeyInfo::Kind::Primary, {column.name}});
      }
    }
    table.columns.push_back(std::move(column));
  }
}

void ReadKeys(sqlite3* database, const Text& path, TableInfo& table) {
  RowQuery rows(database, path,
                "SELECT l.name, l.\"unique\", i.name FROM pragma_index_list(?1, 'main') l, "
                "pragma_index_info(l.name, 'main') i ORDER BY l.seq DESC, i.seqno",
                table.name);
  Text last;
  bool known = false;
  while (rows.Next()) {
    const Text index = rows.TextAt(0);
    if (index != last) {
      auto key = tsql::ParseIndexName(table.name, index, rows.NumberAt(1) != 0);
      known = key.has_value();
      if (known) table.keys.push_back(std::move(*key));
      last = index;
    }
    if (known) table.keys.back().columns.push_back(rows.TextAt(2));
  }
}

void ReadCounter(sqlite3* database, const Text& path, TableInfo& table) {
  RowQuery rows(database, path, "SELECT seed, step FROM main." + Text(tsql::kCounterTable) + " WHERE table_name=?1",
                tsql::LowerKey(table.name));
  if (!rows.Next()) return;
  table.identity_seed = rows.NumberAt(0);
  table.identity_step = rows.NumberAt(1);
}

}  // namespace

tsql::TablePtr ReadTable(sqlite3* database, const Text& path, const Text& name) {
  RowQuery rows(database, path,
                "SELECT name, sql FROM main.sqlite_schema WHERE type='table' AND name=?1 COLLATE NOCASE", name);
  if (!rows.Next()) return nullptr;
  auto table = std::make_shared<TableInfo>();
  table->name = rows.TextAt(0);
  ReadColumns(database, path, *table, rows.TextAt(1));
  ReadKeys(database, path, *table);
  if (table->counted_identity) ReadCounter(database, path, *table);
  table->signature = SignatureOf(*table);
  return table;
}

Text ReadDefinition(sqlite3* database, const Text& path, const TableInfo& table) {
  RowQuery rows(database, path,
                "SELECT sql FROM " + table.SchemaName() + ".sqlite_schema WHERE type='table' AND name=?1", table.name);
  return rows.Next() ? rows.TextAt(0) : Text();
}

std::uint64_t SignatureOf(const TableInfo& table) {
  Text text;
  for (const ColumnInfo& column : table.columns) {
    text += column.name + '|' + Declaration(column.type) + (column.nullable ? "|n" : "|") +
            (column.identity ? "i" : "") + (column.computed ? "c" : "") + column.alias_of + '|' + column.default_sql +
            '\n';
  }
  for (const KeyInfo& key : table.keys) {
    text += key.name + '|' + std::to_string(static_cast<int>(key.kind));
    for (const Text& column : key.columns) text += '|' + column;
    text += '\n';
  }
  if (table.counted_identity) text += std::to_string(table.identity_seed) + '|' + std::to_string(table.identity_step);
  if (table.view) {
    text = table.view->source;
    for (const Text& column : table.view->columns) text += '\n' + column;
  }
  return std::hash<Text>()(text) | 1;
}

}  // namespace rebate
