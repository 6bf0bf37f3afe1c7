#include "platform/database/tsql/print/definition.h"

#include <algorithm>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

// `text` as a string of SQLite.
Text Quoted(std::string_view text) {
  return '\'' + Replace(text, "'", "''") + '\'';
}

Text Joined(const std::vector<Text>& parts, char separator) {
  Text joined;
  for (const Text& part : parts) joined += (joined.empty() ? Text() : Text(1, separator)) + part;
  return joined;
}

ColumnInfo& NeedColumn(TableInfo& table, const Text& name) {
  for (ColumnInfo& column : table.columns) {
    if (EqualsIgnoreCase(column.name, name)) return column;
  }
  Refuse("Column name '" + name + "' does not exist in the target table or view.");
}

// ---- what a table will be ----

bool CanCount(const DataType& type) {
  return type.kind != TypeKind::Bit && (IsInteger(type.kind) || (type.kind == TypeKind::Decimal && type.scale == 0));
}

void AddIdentity(TableInfo& table, const ColumnDraft& draft) {
  if (table.Identity() != nullptr) {
    Refuse("Multiple identity columns specified for table '" + table.name +
           "'. Only one identity column per table is allowed.");
  }
  if (!CanCount(draft.info.type)) {
    Refuse("Identity column '" + draft.info.name +
           "' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0.");
  }
  if (draft.identity_step == 0) {
    Refuse("Identity column '" + draft.info.name + "' contains invalid INCREMENT.");
  }
  table.identity_seed = draft.identity_seed;
  table.identity_step = draft.identity_step;
}

// The column that SQLite's text of a computed one is, where it is nothing but that.
Text PlainColumn(const TableInfo& table, const TableDraft& draft, const Text& computed_sql) {
  for (const ColumnInfo& column : table.columns) {
    if (!column.computed && computed_sql == SqlName(column.name)) return column.name;
  }
  for (const ColumnDraft& column : draft.columns) {
    if (column.computed_sql.empty() && computed_sql == SqlName(column.info.name)) return column.info.name;
  }
  return {};
}

void AddColumn(TableInfo& table, const TableDraft& draft, const ColumnDraft& added) {
  if (table.FindColumn(added.info.name) != nullptr) {
    Refuse("Column names in each table must be unique. Column name '" + added.info.name + "' in table '" + table.name +
           "' is specified more than once.");
  }
  if (added.info.identity) AddIdentity(table, added);
  ColumnInfo column = added.info;
  column.nullable = column.nullable && !column.identity;
  column.computed = !added.computed_sql.empty();
  column.default_sql = added.default_sql;
  column.has_default = !added.default_sql.empty();
  if (column.computed) column.alias_of = PlainColumn(table, draft, added.computed_sql);
  table.columns.push_back(std::move(column));
}

Text KeyName(const TableInfo& table, const KeyConstraint& key) {
  if (!key.name.empty()) return key.name;
  if (key.primary) return "PK_" + table.name;
  return "UQ_" + table.name + '_' + Joined(key.columns, '_');
}

void AddKey(TableInfo& table, const KeyConstraint& added, std::size_t old_columns) {
  KeyInfo key{KeyName(table, added), added.primary ? KeyInfo::Kind::Primary : KeyInfo::Kind::UniqueConstraint,
              added.columns};
  for (const KeyInfo& other : table.keys) {
    if (added.primary && other.kind == KeyInfo::Kind::Primary) {
      Refuse(old_columns > 0 ? "Table '" + table.name + "' already has a primary key defined on it."
                             : "Cannot add multiple PRIMARY KEY constraints to table '" + table.name + "'.");
    }
    if (!EqualsIgnoreCase(other.name, key.name)) continue;
    if (!added.name.empty()) Refuse("There is already an object named '" + key.name + "' in the database.");
    key.name += '_' + std::to_string(table.keys.size() + 1);
  }
  for (const Text& name : key.columns) {
    ColumnInfo& column = NeedColumn(table, name);
    if (!added.primary) continue;
    if (column.nullable && static_cast<std::size_t>(&column - table.columns.data()) < old_columns) {
      Refuse("Cannot define PRIMARY KEY constraint on nullable column in table '" + table.name + "'.");
    }
    column.nullable = false;
  }
  table.keys.push_back(std::move(key));
}

// Whether the key is what SQLite numbers the rows by: the primary key of a permanent table over an int that counts 1,
// 2, 3.
bool IsRowNumber(const KeyInfo& key, const TableInfo& table) {
  const ColumnInfo* column = key.columns.size() == 1 ? table.FindColumn(key.columns.front()) : nullptr;
  return column != nullptr && column->identity && key.kind == KeyInfo::Kind::Primary && !table.temporary &&
         column->type.kind == TypeKind::Int && table.identity_seed == 1 && table.identity_step == 1;
}

const KeyInfo* RowNumber(const TableInfo& table) {
  if (table.counted_identity) return nullptr;
  const auto found =
      std::find_if(table.keys.begin(), table.keys.end(), [&](const KeyInfo& key) { return IsRowNumber(key, table); });
  return found != table.keys.end() ? &*found : nullptr;
}

// ---- columns and checks ----

Text RowNumberHead(const ColumnInfo& column) {
  return SqlName(column.name) + " INTEGER CONSTRAINT ";
}

Text AliasHead(const ColumnInfo& column) {
  return SqlName(column.name) + ' ' + Declaration(column.type) + CollationText(column.type) + " GENERATED ALWAYS AS (";
}

Text ColumnText(const ColumnDraft& draft, const TableInfo& table) {
  const ColumnInfo& column = *table.FindColumn(draft.info.name);
  if (column.identity && !table.counted_identity) {
    return RowNumberHead(column) + SqlName(RowNumber(table)->name) + " PRIMARY KEY AUTOINCREMENT CONSTRAINT " +
           SqlName(kIdentityCheck) + " CHECK(" + SqlName(column.name) + "<=2147483647)";
  }
  if (column.computed) return AliasHead(column) + draft.computed_sql + ") VIRTUAL";
  Text sql = SqlName(column.name) + ' ' + Declaration(column.type) + CollationText(column.type);
  if (!column.nullable) sql += " NOT NULL";
  if (column.identity) return sql + " DEFAULT (" + Text(kNextIdentity) + '(' + Quoted(LowerKey(table.name)) + "))";
  if (!draft.default_sql.empty()) sql += " DEFAULT (" + draft.default_sql + ')';
  return sql;
}

// Checks stand behind the last column, so that more columns can follow.
Text ChecksText(const TableDraft& draft, const TableInfo& table) {
  Text sql;
  for (std::size_t i = 0; i < draft.checks.size(); ++i) {
    const CheckDraft& check = draft.checks[i];
    Text name = check.name;
    if (name.empty()) {
      name = "CK_" + table.name + (check.column.empty() ? "" : '_' + check.column);
      if (i > 0) name += '_' + std::to_string(i + 1);
    }
    if (!check.column.empty()) name += '\n' + check.column;
    sql += " CONSTRAINT " + SqlName(name) + " CHECK (" + check.condition_sql + ')';
  }
  return sql;
}

Text ElementsText(const TableDraft& draft, const TableInfo& table) {
  Text sql;
  for (const ColumnDraft& column : draft.columns) sql += (sql.empty() ? "" : ",") + ColumnText(column, table);
  return sql + ChecksText(draft, table);
}

// ---- indexes ----

struct KindWord {
  KeyInfo::Kind kind;
  std::string_view word;
};
constexpr KindWord kKindWords[] = {{KeyInfo::Kind::Primary, "primary:"}, {KeyInfo::Kind::UniqueConstraint, "unique:"}};
constexpr std::string_view kNullsWord = "nulls:";

const ColumnInfo& StoredColumn(const TableInfo& table, const Text& name) {
  const ColumnInfo& column = *table.FindColumn(name);
  const ColumnInfo* base = column.alias_of.empty() ? nullptr : table.FindColumn(column.alias_of);
  return base != nullptr ? *base : column;
}

Text IndexHead(const TableInfo& table, const Text& name, bool unique) {
  return Text(unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + table.SchemaName() + '.' + SqlName(name) + " ON " +
         SqlName(table.name) + '(';
}

// To SQLite no Null equals another one. So the rows that hold one have a unique index of their own, in which a Null is
// a value. Empty where no column of the key can be Null.
Text NullsIndex(const KeyInfo& key, const TableInfo& table) {
  std::vector<Text> values;
  Text any_null;
  for (const Text& name : key.columns) {
    const ColumnInfo& column = StoredColumn(table, name);
    const Text sql = SqlName(column.name);
    if (!column.nullable) {
      values.push_back(sql);
      continue;
    }
    values.push_back(sql + " IS NULL");
    values.push_back("ifnull(" + sql + ",'')" + CollationText(column.type));
    any_null += (any_null.empty() ? "" : " OR ") + sql + " IS NULL";
  }
  if (any_null.empty()) return {};
  const Text index = Text(kNullsWord) + IndexName(table.name, key);
  return IndexHead(table, index, true) + Joined(values, ',') + ") WHERE " + any_null;
}

}  // namespace

TableInfo ExtendedInfo(const TableInfo& table, const TableDraft& draft) {
  TableInfo info = table;
  const std::size_t old_columns = table.columns.size();
  const std::size_t old_keys = table.keys.size();
  for (const ColumnDraft& column : draft.columns) AddColumn(info, draft, column);
  // The primary key makes columns not null, whatever stands in front of it.
  for (const bool primary : {true, false}) {
    for (const KeyConstraint& key : draft.keys) {
      if (key.primary == primary) AddKey(info, key, old_columns);
    }
  }
  if (info.Identity() != nullptr && table.Identity() == nullptr) {
    info.counted_identity = std::none_of(info.keys.begin() + static_cast<std::ptrdiff_t>(old_keys), info.keys.end(),
                                         [&](const KeyInfo& key) { return IsRowNumber(key, info); });
  }
  return info;
}

TableInfo InfoOf(const TableDraft& draft) {
  TableInfo table;
  table.name = draft.name.name;
  table.temporary = table.name.starts_with('#');
  return ExtendedInfo(table, draft);
}

Text CounterStatement(const TableDraft& draft, const TableInfo& info) {
  const bool counted =
      std::any_of(draft.columns.begin(), draft.columns.end(), [](const ColumnDraft& c) { return c.info.identity; });
  // Of temporary tables the connection keeps count.
  if (!counted || !info.counted_identity || info.temporary) return {};
  return "INSERT OR REPLACE INTO main." + Text(kCounterTable) + "(table_name,seed,step,last) VALUES(" +
         Quoted(LowerKey(info.name)) + ',' + std::to_string(info.identity_seed) + ',' +
         std::to_string(info.identity_step) + ",NULL)";
}

std::vector<Text> TableStatements(const TableDraft& draft, const TableInfo& info) {
  std::vector<Text> statements{"CREATE TABLE " + info.SqlName() + '(' + ElementsText(draft, info) + ')'};
  if (Text counter = CounterStatement(draft, info); !counter.empty()) statements.push_back(std::move(counter));
  return statements;
}

std::vector<Text> CreateStatements(const TableDraft& draft) {
  const TableInfo info = InfoOf(draft);
  std::vector<Text> statements = TableStatements(draft, info);
  for (const KeyInfo& key : info.keys) {
    for (Text& statement : KeyStatements(key, info)) statements.push_back(std::move(statement));
  }
  return statements;
}

std::vector<Text> KeyStatements(const KeyInfo& key, const TableInfo& table) {
  if (!table.counted_identity && IsRowNumber(key, table)) return {};
  std::vector<Text> columns;
  for (const Text& name : key.columns) columns.push_back(SqlName(StoredColumn(table, name).name));
  std::vector<Text> statements{IndexHead(table, IndexName(table.name, key), key.IsUnique()) + Joined(columns, ',') +
                               ')'};
  if (!key.IsUnique()) return statements;
  if (Text nulls = NullsIndex(key, table); !nulls.empty()) statements.push_back(std::move(nulls));
  return statements;
}

KeyInfo KeyOf(const CreateIndex& statement, const TableInfo& table) {
  KeyInfo key{statement.name, statement.unique ? KeyInfo::Kind::UniqueIndex : KeyInfo::Kind::Index, statement.columns};
  for (const Text& column : key.columns) {
    if (table.FindColumn(column) != nullptr) continue;
    Refuse("Column name '" + column + "' does not exist in the target table or view.");
  }
  for (const KeyInfo& other : table.keys) {
    if (!EqualsIgnoreCase(other.name, key.name)) continue;
    Refuse("The operation failed because an index or statistics with name '" + key.name +
           "' already exists on table '" + table.name + "'.");
  }
  return key;
}

std::optional<std::vector<Text>> AddStatements(const TableDraft& draft, const TableInfo& extended) {
  if (!draft.checks.empty()) return std::nullopt;
  std::vector<Text> statements;
  for (const ColumnDraft& column : draft.columns) {
    const ColumnInfo& info = *extended.FindColumn(column.info.name);
    if (!info.computed && (!info.nullable || info.has_default)) return std::nullopt;
    statements.push_back("ALTER TABLE " + extended.SqlName() + " ADD COLUMN " + ColumnText(column, extended));
  }
  return statements;
}

Text ExtendedStatement(std::string_view definition, const TableDraft& draft, const TableInfo& extended) {
  const Text head = "CREATE TABLE " + SqlName(extended.name);
  const std::size_t begin = std::min(definition.find('(', std::min(head.size(), definition.size())), definition.size());
  const std::string_view elements = definition.substr(begin, definition.rfind(')') - begin);
  const Text added = ElementsText(draft, extended);
  return "CREATE TABLE " + extended.SqlName() + Text(elements) + (draft.columns.empty() ? "" : ",") + added + ')';
}

// ---- names inside SQLite ----

Text IndexName(std::string_view table, const KeyInfo& key) {
  Text name;
  for (const KindWord& kind : kKindWords) {
    if (kind.kind == key.kind) name = kind.word;
  }
  return name + Text(table) + '.' + key.name;
}

std::vector<Text> IndexNames(const KeyInfo& key, const TableInfo& table) {
  std::vector<Text> names;
  if (!table.counted_identity && IsRowNumber(key, table)) return names;
  names.push_back(IndexName(table.name, key));
  if (key.IsUnique() && !NullsIndex(key, table).empty()) names.push_back(Text(kNullsWord) + names.front());
  return names;
}

std::optional<KeyInfo> ParseIndexName(std::string_view table, std::string_view index, bool unique) {
  KeyInfo key;
  key.kind = unique ? KeyInfo::Kind::UniqueIndex : KeyInfo::Kind::Index;
  const Text start = Text(table) + '.';
  if (!EqualsIgnoreCase(index.substr(0, start.size()), start)) {
    const KindWord* found = std::find_if(std::begin(kKindWords), std::end(kKindWords),
                                         [&](const KindWord& kind) { return unique && index.starts_with(kind.word); });
    if (found == std::end(kKindWords)) return std::nullopt;
    key.kind = found->kind;
    index.remove_prefix(found->word.size());
  }
  key.name = index.substr(std::min(start.size(), index.size()));
  return key;
}

CheckDraft ParseCheckName(std::string_view name) {
  const std::size_t end = std::min(name.find('\n'), name.size());
  return {Text(name.substr(0, end)), {}, Text(name.substr(std::min(end + 1, name.size())))};
}

Text RowNumberKey(std::string_view definition, const ColumnInfo& column) {
  const Text head = RowNumberHead(column) + '"';
  const std::size_t at = definition.find(head);
  if (at == std::string_view::npos) return {};
  definition.remove_prefix(at + head.size());
  Text name;
  for (std::size_t i = 0; i < definition.size(); ++i) {
    if (definition[i] == '"' && !definition.substr(i + 1).starts_with('"')) break;
    if (definition[i] == '"') ++i;
    name += definition[i];
  }
  return name;
}

Text AliasOf(std::string_view definition, const ColumnInfo& column) {
  const Text head = AliasHead(column) + '"';
  const std::size_t at = definition.find(head);
  if (at == std::string_view::npos) return {};
  definition.remove_prefix(at + head.size());
  const std::size_t end = std::min(definition.find('"'), definition.size());
  return definition.substr(end).starts_with("\") VIRTUAL") ? Text(definition.substr(0, end)) : Text();
}

Text CollationText(const DataType& type) {
  if (IsText(type.kind)) return " COLLATE " + Text(kTextCollation);
  return IsExactNumber(type.kind) ? " COLLATE " + Text(kNumberCollation) : Text();
}

}  // namespace rebate::tsql
