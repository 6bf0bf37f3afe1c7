#include "platform/database/embedded/account_catalog.h"

#include <algorithm>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

using tsql::LowerKey;
using tsql::ObjectName;
using tsql::TableInfo;
using tsql::TablePtr;

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

bool IsInternal(std::string_view key) {
  return key.starts_with("sqlite_") || key == kViewTable;
}

bool IsTemporary(const ObjectName& name) {
  return name.name.starts_with('#');
}

// Whether qualifiers such as `dbo` and `tempdb..` may stand before the name.
bool Reaches(const ObjectName& name) {
  const bool owner = name.owner.empty() || EqualsIgnoreCase(name.owner, "dbo");
  const bool database = name.database.empty() || (EqualsIgnoreCase(name.database, "tempdb") && IsTemporary(name));
  return owner && database;
}

Text Statement(sqlite3_stmt* statement, int column) {
  return Text(ColumnText(statement, column));
}

std::uint64_t SignatureOf(const TableInfo& table) {
  Text text;
  for (const tsql::ColumnInfo& column : table.columns) {
    text += column.name + '|' + Declaration(column.type) + (column.nullable ? "|n" : "|") +
            (column.identity ? "i" : "") + (column.computed ? "c" : "") + column.alias_of + '\n';
  }
  if (table.view) {
    text = table.view->source;
    for (const Text& column : table.view->columns) text += '\n' + column;
  }
  return std::hash<Text>()(text) | 1;
}

// The column that a computed one repeats under a second name, by the statement that made the table.
Text AliasOf(std::string_view definition, const tsql::ColumnInfo& column) {
  Text head = tsql::SqlName(column.name) + ' ' + Declaration(column.type);
  if (IsText(column.type.kind)) head += " COLLATE " + Text(tsql::kCollation);
  head += " GENERATED ALWAYS AS (\"";
  const std::size_t at = definition.find(head);
  if (at == std::string_view::npos) return {};
  definition.remove_prefix(at + head.size());
  const std::size_t end = std::min(definition.find('"'), definition.size());
  return definition.substr(end).starts_with("\") VIRTUAL") ? Text(definition.substr(0, end)) : Text();
}

Text JoinLines(const std::vector<Text>& lines) {
  Text joined;
  for (const Text& line : lines) joined += line + '\n';
  return joined;
}

std::vector<Text> SplitLines(const Text& text) {
  return text.empty() ? std::vector<Text>() : Split(text, '\n');
}

Text WithoutBrackets(std::string_view part) {
  part = Trim(part);
  if (part.size() >= 2 && (part.front() == '[' || part.front() == '"')) part = part.substr(1, part.size() - 2);
  return Text(part);
}

void RefuseExisting(const ObjectName& name) {
  Refuse("There is already an object named '" + name.name + "' in the database.");
}

[[noreturn]] void RefuseMissing(const ObjectName& name, std::string_view kind) {
  Refuse("Cannot drop the " + Text(kind) + " '" + tsql::WrittenName(name) +
         "', because it does not exist or you do not have permission.");
}

}  // namespace

TablePtr AccountCatalog::Find(const ObjectName& name) {
  if (!Reaches(name)) return nullptr;
  if (!IsTemporary(name)) return FindPermanent(name.name);
  const auto found = temporary_.find(LowerKey(name.name));
  return found != temporary_.end() && found->second.present ? found->second.table : nullptr;
}

TablePtr AccountCatalog::FindPermanent(const Text& name) {
  const Text key = LowerKey(name);
  if (IsInternal(key)) return nullptr;
  if (const auto found = permanent_.find(key); found != permanent_.end()) return found->second;
  TablePtr table = LoadTable(name, false);
  if (!table) table = LoadView(name);
  if (table) permanent_.emplace(key, table);
  return table;
}

std::optional<std::int64_t> AccountCatalog::ObjectId(std::string_view name) {
  const std::vector<Text> parts = Split(name, '.');
  if (parts.empty() || parts.size() > 3) return std::nullopt;
  ObjectName object;
  object.name = WithoutBrackets(parts.back());
  if (parts.size() > 1) object.owner = WithoutBrackets(parts[parts.size() - 2]);
  if (parts.size() > 2) object.database = WithoutBrackets(parts.front());
  if (!Find(object)) return std::nullopt;
  return static_cast<std::int64_t>((std::hash<Text>()(LowerKey(object.name)) & 0x3FFFFFFF) | 1);
}

TablePtr AccountCatalog::LoadTable(const Text& name, bool temporary) {
  const Text schema = temporary ? "tempdb" : "main";
  const StatementHandle query = Prepare(
      database_, "SELECT name, sql FROM " + schema + ".sqlite_schema WHERE type='table' AND name=?1 COLLATE NOCASE",
      path_);
  Bind(query.get(), 1, tsql::Value::Of(std::string_view(name)));
  if (sqlite3_step(query.get()) != SQLITE_ROW) return nullptr;
  auto table = std::make_shared<TableInfo>();
  table->name = Statement(query.get(), 0);
  table->temporary = temporary;
  ReadColumns(*table, ColumnText(query.get(), 1));
  table->signature = SignatureOf(*table);
  return table;
}

void AccountCatalog::ReadColumns(TableInfo& table, std::string_view definition) {
  const Text schema = table.temporary ? "tempdb" : "main";
  const StatementHandle query =
      Prepare(database_, "SELECT name, type, \"notnull\", pk, hidden FROM pragma_table_xinfo(?1, ?2)", path_);
  Bind(query.get(), 1, tsql::Value::Of(std::string_view(table.name)));
  Bind(query.get(), 2, tsql::Value::Of(std::string_view(schema)));
  while (sqlite3_step(query.get()) == SQLITE_ROW) {
    tsql::ColumnInfo column;
    column.name = Statement(query.get(), 0);
    const std::string_view declared = ColumnText(query.get(), 1);
    // SQLite tells the type of a computed column with the words behind it.
    column.type = tsql::ParseDeclaration(declared.substr(0, declared.find(' ')))
                      .value_or(tsql::TextType(tsql::TypeKind::NVarChar, tsql::DataType::kMaxLength));
    column.identity = sqlite3_column_int(query.get(), 3) == 1;
    column.nullable = sqlite3_column_int(query.get(), 2) == 0 && !column.identity;
    column.computed = sqlite3_column_int(query.get(), 4) != 0;
    if (column.computed) column.alias_of = AliasOf(definition, column);
    table.columns.push_back(std::move(column));
  }
}

TablePtr AccountCatalog::LoadView(const Text& name) {
  const StatementHandle query = Prepare(
      database_, "SELECT name, columns, source FROM main." + Text(kViewTable) + " WHERE name=?1 COLLATE NOCASE", path_);
  Bind(query.get(), 1, tsql::Value::Of(std::string_view(name)));
  if (sqlite3_step(query.get()) != SQLITE_ROW) return nullptr;
  auto view = std::make_shared<TableInfo>();
  view->name = Statement(query.get(), 0);
  view->view = tsql::ParseView(Statement(query.get(), 2), SplitLines(Statement(query.get(), 1)));
  view->signature = SignatureOf(*view);
  return view;
}

std::int64_t AccountCatalog::SchemaVersion() {
  if (!version_statement_) version_statement_ = Prepare(database_, "PRAGMA main.schema_version", path_);
  const RunningStatement running(version_statement_.get());
  const int result = sqlite3_step(version_statement_.get());
  if (result != SQLITE_ROW) throw SqliteError(database_, result, path_);
  return sqlite3_column_int64(version_statement_.get(), 0);
}

void AccountCatalog::NoticeChanges() {
  const std::int64_t version = SchemaVersion();
  if (version == schema_version_) return;
  schema_version_ = version;
  permanent_.clear();
  ++epoch_;
}

void AccountCatalog::ChangeTemporary() {
  if (!before_) before_ = temporary_;
  ++epoch_;
}

void AccountCatalog::ChangePermanent() {
  permanent_.clear();
  permanent_changed_ = true;
  ++epoch_;
}

void AccountCatalog::Committed() {
  before_.reset();
  permanent_changed_ = false;
}

void AccountCatalog::RolledBack() {
  if (before_) {
    temporary_ = std::move(*before_);
    before_.reset();
    ++epoch_;
  }
  if (permanent_changed_) {
    permanent_.clear();
    permanent_changed_ = false;
    ++epoch_;
  }
}

void AccountCatalog::ReturnTo(const Mark& mark) {
  temporary_ = mark.temporary;
  permanent_.clear();
  ++epoch_;
}

void AccountCatalog::Create(const tsql::TableDraft& draft) {
  if (!Reaches(draft.name))
    Refuse("The specified schema name \"" + draft.name.owner +
           "\" either does not exist or you do not have permission to use it.");
  if (Find(draft.name)) RefuseExisting(draft.name);
  if (IsTemporary(draft.name)) return CreateTemporary(draft);
  if (IsInternal(LowerKey(draft.name.name))) RefuseExisting(draft.name);
  for (const Text& statement : CreateStatements(draft)) Run(database_, statement, path_);
  ChangePermanent();
}

void AccountCatalog::CreateTemporary(const tsql::TableDraft& draft) {
  const std::vector<Text> statements = CreateStatements(draft);
  const Text joined = JoinLines(statements);
  const Text key = LowerKey(draft.name.name);
  ChangeTemporary();
  if (const auto found = temporary_.find(key); found != temporary_.end()) {
    if (found->second.statements == joined) {
      found->second.present = true;
      return;
    }
    Run(database_, "DROP TABLE " + found->second.table->SqlName(), path_);
    temporary_.erase(found);
  }
  for (const Text& statement : statements) Run(database_, statement, path_);
  temporary_[key] = {LoadTable(draft.name.name, true), joined};
}

void AccountCatalog::DropTemporary(TemporaryTables::iterator found) {
  ChangeTemporary();
  const Text name = found->second.table->SqlName();
  if (found->second.altered) {
    Run(database_, "DROP TABLE " + name, path_);
    temporary_.erase(found);
  } else {
    Run(database_, "DELETE FROM " + name, path_);
    found->second.present = false;
  }
}

void AccountCatalog::Create(const tsql::CreateIndex& statement) {
  const TablePtr table = FindObject(*this, statement.table);
  if (table->view) Refuse("Cannot create index on view '" + table->name + "' because the view is not schema bound.");
  for (const Text& sql : CreateStatements(statement, *table)) Run(database_, sql, path_);
  if (!table->temporary) return ChangePermanent();
  ChangeTemporary();
  temporary_[LowerKey(table->name)].altered = true;
}

void AccountCatalog::CreateView(const tsql::CreateView& statement) {
  if (IsTemporary(statement.view)) Refuse("Temporary views are not allowed.");
  if (Find(statement.view)) RefuseExisting(statement.view);
  const auto view = tsql::ParseView(statement.source, statement.columns);
  const tsql::VariableTypes no_variables;
  CheckView({*this, {}, no_variables}, *view, statement.view.name);
  const StatementHandle insert =
      Prepare(database_, "INSERT INTO main." + Text(kViewTable) + "(name, columns, source) VALUES(?1, ?2, ?3)", path_);
  Text columns;
  for (const Text& column : statement.columns) columns += (columns.empty() ? "" : "\n") + column;
  Bind(insert.get(), 1, tsql::Value::Of(std::string_view(statement.view.name)));
  Bind(insert.get(), 2, tsql::Value::Of(std::string_view(columns)));
  Bind(insert.get(), 3, tsql::Value::Of(std::string_view(statement.source)));
  if (const int result = sqlite3_step(insert.get()); result != SQLITE_DONE) throw SqliteError(database_, result, path_);
  ChangePermanent();
}

void AccountCatalog::Drop(const tsql::Drop& statement) {
  for (const ObjectName& name : statement.names) {
    if (statement.kind == tsql::ObjectKind::Index) {
      DropIndex(statement, name);
    } else {
      DropObject(statement, name);
    }
  }
}

void AccountCatalog::DropObject(const tsql::Drop& statement, const ObjectName& name) {
  const bool view = statement.kind == tsql::ObjectKind::View;
  const TablePtr object = Find(name);
  if (!object || (object->view != nullptr) != view) {
    if (statement.if_exists) return;
    RefuseMissing(name, view ? "view" : "table");
  }
  if (object->temporary) return DropTemporary(temporary_.find(LowerKey(object->name)));
  Run(database_,
      view ? "DELETE FROM main." + Text(kViewTable) + " WHERE name=" + tsql::SqlString(object->name) + " COLLATE NOCASE"
           : "DROP TABLE " + object->SqlName(),
      path_);
  ChangePermanent();
}

void AccountCatalog::DropIndex(const tsql::Drop& statement, const ObjectName& name) {
  ObjectName table_name;
  table_name.name = statement.on_table.empty() ? name.owner : statement.on_table;
  const TablePtr table = Find(table_name);
  const Text index = tsql::IndexName(table ? table->name : table_name.name, name.name);
  const StatementHandle query =
      Prepare(database_, "SELECT name FROM main.sqlite_schema WHERE type='index' AND name=?1 COLLATE NOCASE", path_);
  Bind(query.get(), 1, tsql::Value::Of(std::string_view(index)));
  if (sqlite3_step(query.get()) != SQLITE_ROW) {
    if (statement.if_exists) return;
    ObjectName written;
    written.owner = table_name.name;
    written.name = name.name;
    RefuseMissing(written, "index");
  }
  const Text found = Statement(query.get(), 0);
  sqlite3_reset(query.get());
  Run(database_, "DROP INDEX main." + tsql::SqlName(found), path_);
  ChangePermanent();
}

void AccountCatalog::Truncate(const ObjectName& name) {
  const TablePtr table = FindObject(*this, name);
  if (table->view) Refuse("Cannot truncate '" + table->name + "' because it is not a table.");
  Run(database_, "DELETE FROM " + table->SqlName(), path_);
  const bool counted =
      std::any_of(table->columns.begin(), table->columns.end(), [](const auto& c) { return c.identity; });
  if (counted && !table->temporary) {
    Run(database_, "DELETE FROM main.sqlite_sequence WHERE name=" + tsql::SqlString(table->name), path_);
  }
}

Text AccountCatalog::UniqueIndexOver(const TableInfo& table, std::string_view columns) {
  const Text schema = table.temporary ? "tempdb" : "main";
  const StatementHandle query = Prepare(database_,
                                        "SELECT l.name FROM pragma_index_list(?1, ?2) l WHERE l.\"unique\"=1 AND "
                                        "(SELECT group_concat(i.name, ', ') FROM pragma_index_info(l.name, ?2) i)=?3",
                                        path_);
  Bind(query.get(), 1, tsql::Value::Of(std::string_view(table.name)));
  Bind(query.get(), 2, tsql::Value::Of(std::string_view(schema)));
  Bind(query.get(), 3, tsql::Value::Of(columns));
  if (sqlite3_step(query.get()) != SQLITE_ROW) return "PK_" + table.name;
  const std::string_view index = ColumnText(query.get(), 0);
  return Text(index.substr(std::min(table.name.size() + 1, index.size())));
}

}  // namespace rebate
