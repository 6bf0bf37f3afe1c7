#include "platform/database/embedded/account_catalog.h"

#include <algorithm>

#include "platform/database/embedded/constraint_error.h"
#include "platform/database/embedded/system_tables.h"
#include "platform/database/embedded/table_reader.h"
#include "platform/database/tsql/bind/bind_statement.h"
#include "platform/values/ascii.h"

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
  return key.starts_with("sqlite_") || key == kViewTable || key == tsql::kCounterTable;
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

Text JoinLines(const std::vector<Text>& lines) {
  Text joined;
  for (const Text& line : lines) joined += line + '\n';
  return joined;
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

void CheckName(const ObjectName& name) {
  if (Reaches(name)) return;
  Refuse("The specified schema name \"" + name.owner +
         "\" either does not exist or you do not have permission to use it.");
}

}  // namespace

AccountCatalog::AccountCatalog(sqlite3* database, Text path) : database_(database), path_(std::move(path)) {
  NeedDone(sqlite3_create_function_v2(database_, Text(tsql::kNextIdentity).c_str(), 1, SQLITE_UTF8 | SQLITE_INNOCUOUS,
                                      this, GiveNextIdentity, nullptr, nullptr, nullptr));
  RegisterSystemTables(database_, *this);
}

// ---- finding ----

TablePtr AccountCatalog::Find(const ObjectName& name) {
  if (Reaches(name)) {
    if (!IsTemporary(name)) {
      TablePtr table = FindPermanent(name.name);
      return table ? table : FindSystemTable(name);
    }
    const auto found = temporary_.find(LowerKey(name.name));
    return found != temporary_.end() && found->second.present ? found->second.table : nullptr;
  }
  return FindSystemTable(name);
}

TablePtr AccountCatalog::FindPermanent(const Text& name) {
  const Text key = LowerKey(name);
  if (IsInternal(key)) return nullptr;
  if (const auto found = permanent_.find(key); found != permanent_.end()) return found->second;
  TablePtr table = ReadTable(database_, path_, name);
  if (!table) table = LoadView(name);
  if (table) permanent_.emplace(key, table);
  return table;
}

TablePtr AccountCatalog::LoadView(const Text& name) {
  RowQuery rows(database_, path_,
                "SELECT name, columns, source FROM main." + Text(kViewTable) + " WHERE name=?1 COLLATE NOCASE", name);
  if (!rows.Next()) return nullptr;
  auto view = std::make_shared<TableInfo>();
  view->name = rows.TextAt(0);
  view->view = tsql::ParseView(rows.TextAt(2), Split(rows.TextAt(1), '\n'));
  view->signature = SignatureOf(*view);
  return view;
}

std::vector<TablePtr> AccountCatalog::Objects() {
  std::vector<Text> names;
  RowQuery rows(database_, path_,
                "SELECT name FROM main.sqlite_schema WHERE type='table' UNION ALL SELECT name FROM main." +
                    Text(kViewTable) + " ORDER BY 1 COLLATE NOCASE");
  while (rows.Next()) names.push_back(rows.TextAt(0));
  std::vector<TablePtr> objects;
  for (const Text& name : names) {
    if (TablePtr object = FindPermanent(name)) objects.push_back(std::move(object));
  }
  return objects;
}

std::int64_t AccountCatalog::IdOf(std::string_view object) {
  // The same on every machine: a program may have kept it.
  std::uint32_t hash = 2166136261u;
  for (const char c : LowerKey(object)) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return static_cast<std::int64_t>((hash & 0x3FFFFFFFu) | 1u);
}

std::optional<ObjectName> AccountCatalog::NamedObject(std::string_view text) {
  const std::vector<Text> parts = Split(text, '.');
  if (parts.empty() || parts.size() > 3) return std::nullopt;
  ObjectName object;
  object.name = WithoutBrackets(parts.back());
  if (parts.size() > 1) object.owner = WithoutBrackets(parts[parts.size() - 2]);
  if (parts.size() > 2) object.database = WithoutBrackets(parts.front());
  return object;
}

std::optional<std::int64_t> AccountCatalog::ObjectId(std::string_view name) {
  const std::optional<ObjectName> object = NamedObject(name);
  if (!object) return std::nullopt;
  if (Find(*object)) return IdOf(object->name);
  if (!Reaches(*object) || IsTemporary(*object)) return std::nullopt;
  return HasConstraint(object->name) ? std::optional(IdOf(object->name)) : std::nullopt;
}

bool AccountCatalog::HasConstraint(std::string_view name) {
  for (const TablePtr& table : Objects()) {
    for (const tsql::KeyInfo& key : table->keys) {
      const bool constraint =
          key.kind == tsql::KeyInfo::Kind::Primary || key.kind == tsql::KeyInfo::Kind::UniqueConstraint;
      if (constraint && EqualsIgnoreCase(key.name, name)) return true;
    }
  }
  return false;
}

void AccountCatalog::RefuseTakenNames(const tsql::TableDraft& draft) {
  if (IsTemporary(draft.name)) return;
  for (const tsql::KeyConstraint& key : draft.keys) {
    if (key.name.empty() || (!FindPermanent(key.name) && !HasConstraint(key.name))) continue;
    Refuse("There is already an object named '" + key.name + "' in the database.");
  }
}

AccountCatalog::TemporaryTable& AccountCatalog::NeedTemporary(const TableInfo& table) {
  const auto found = temporary_.find(LowerKey(table.name));
  if (found == temporary_.end()) Refuse("Invalid object name '" + table.name + "'.");
  return found->second;
}

// ---- noticing changes ----

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

void AccountCatalog::Change(TableInfo now) {
  if (!now.temporary) return ChangePermanent();
  ChangeTemporary();
  TemporaryTable& entry = NeedTemporary(now);
  now.signature = SignatureOf(now);
  entry.table = std::make_shared<const TableInfo>(std::move(now));
  entry.altered = true;
}

void AccountCatalog::Committed() {
  before_.reset();
  permanent_changed_ = false;
}

void AccountCatalog::RolledBack() noexcept {
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

void AccountCatalog::ReturnTo(Mark&& mark) noexcept {
  temporary_ = std::move(mark.temporary);
  permanent_.clear();
  ++epoch_;
}

// ---- making ----

void AccountCatalog::RefuseTaken(const tsql::TableDraft& draft) {
  CheckName(draft.name);
  if (const TablePtr there = Find(draft.name); there && there->system_source.empty()) RefuseExisting(draft.name);
}

void AccountCatalog::Create(const tsql::TableDraft& draft) {
  Making making;
  if (IsTemporary(draft.name)) return Create(draft, making);
  RefuseTaken(draft);
  if (IsInternal(LowerKey(draft.name.name))) RefuseExisting(draft.name);
  RefuseTakenNames(draft);
  for (const Text& statement : CreateStatements(draft)) Run(database_, statement, path_);
  ChangePermanent();
}

void AccountCatalog::Create(const tsql::TableDraft& draft, Making& making) {
  if (!IsTemporary(draft.name)) return Create(draft);
  RefuseTaken(draft);
  CreateTemporary(draft, making);
}

void AccountCatalog::CreateTemporary(const tsql::TableDraft& draft, Making& making) {
  if (!making.table) {
    TableInfo info = InfoOf(draft);
    info.signature = SignatureOf(info);
    making = {std::make_shared<const TableInfo>(std::move(info)), JoinLines(CreateStatements(draft))};
  }
  TemporaryTable made{making.table, making.statements, std::make_shared<Counter>()};
  const Text key = LowerKey(draft.name.name);
  ChangeTemporary();
  if (const auto found = temporary_.find(key); found != temporary_.end()) {
    // The texts tell all of the table but where its numbers start.
    if (found->second.statements == made.statements && found->second.table->signature == made.table->signature) {
      made.table = found->second.table;
      made.emptier = found->second.emptier;
      found->second = std::move(made);
      return;
    }
    Run(database_, "DROP TABLE " + found->second.table->SqlName(), path_);
    temporary_.erase(found);
  }
  for (const Text& statement : CreateStatements(draft)) Run(database_, statement, path_);
  temporary_[key] = std::move(made);
}

void AccountCatalog::Create(const tsql::CreateIndex& statement) {
  const TablePtr table = FindObject(*this, statement.table);
  if (table->view) Refuse("Cannot create index on view '" + table->name + "' because the view is not schema bound.");
  TableInfo now = *table;
  now.keys.push_back(KeyOf(statement, *table));
  MakeKeys(now, table->keys.size());
  Change(std::move(now));
}

void AccountCatalog::CreateView(const tsql::CreateView& statement) {
  CheckName(statement.view);
  if (IsTemporary(statement.view)) Refuse("Temporary views are not allowed.");
  if (const TablePtr there = Find(statement.view); there && there->system_source.empty())
    RefuseExisting(statement.view);
  const auto view = tsql::ParseView(statement.source, statement.columns);
  tsql::ViewColumns(*this, *view, statement.view.name);
  Text columns;
  for (const Text& column : statement.columns) columns += (columns.empty() ? "" : "\n") + column;
  RowQuery(database_, path_, "INSERT INTO main." + Text(kViewTable) + "(name, columns, source) VALUES(?1, ?2, ?3)",
           statement.view.name, columns, statement.source)
      .Next();
  ChangePermanent();
}

// ---- dropping ----

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
  if (!object || !object->system_source.empty()) {
    if (statement.if_exists && !object) return;
    RefuseMissing(name, view ? "view" : "table");
  }
  if ((object->view != nullptr) != view) {
    Refuse(Text("Cannot use DROP ") + (view ? "VIEW" : "TABLE") + " with '" + tsql::WrittenName(name) + "' because '" +
           tsql::WrittenName(name) + "' is a " + (view ? "table. Use DROP TABLE." : "view. Use DROP VIEW."));
  }
  if (!view) return DropTable(*object);
  RowQuery(database_, path_, "DELETE FROM main." + Text(kViewTable) + " WHERE name=?1 COLLATE NOCASE", object->name)
      .Next();
  ChangePermanent();
}

void AccountCatalog::DropTable(const TableInfo& table) {
  const Text key = LowerKey(table.name);
  if (identity_insert_ == key) identity_insert_.clear();
  if (table.temporary) return DropTemporary(temporary_.find(key));
  Run(database_, "DROP TABLE " + table.SqlName(), path_);
  if (table.counted_identity) {
    RowQuery(database_, path_, "DELETE FROM main." + Text(tsql::kCounterTable) + " WHERE table_name=?1", key).Next();
  }
  ChangePermanent();
}

void AccountCatalog::DropTemporary(TemporaryTables::iterator found) {
  ChangeTemporary();
  const Text name = found->second.table->SqlName();
  if (found->second.altered) {
    Run(database_, "DROP TABLE " + name, path_);
    temporary_.erase(found);
    return;
  }
  if (!found->second.emptier) {
    found->second.emptier = {Prepare(database_, "DELETE FROM " + name, path_).release(), FinalizeStatement()};
  }
  sqlite3_stmt* const emptier = found->second.emptier.get();
  {
    const RunningStatement running(emptier);
    const int result = sqlite3_step(emptier);
    if (result != SQLITE_DONE) throw SqliteError(database_, result, path_);
  }
  found->second.present = false;
  found->second.put_aside = ++put_aside_clock_;
  DropOldestPutAside();
}

void AccountCatalog::DropOldestPutAside() {
  auto oldest = temporary_.end();
  std::size_t count = 0;
  for (auto entry = temporary_.begin(); entry != temporary_.end(); ++entry) {
    if (entry->second.present) continue;
    ++count;
    if (oldest == temporary_.end() || entry->second.put_aside < oldest->second.put_aside) oldest = entry;
  }
  if (count <= kPutAside) return;
  Run(database_, "DROP TABLE " + oldest->second.table->SqlName(), path_);
  temporary_.erase(oldest);
}

void AccountCatalog::DropIndex(const tsql::Drop& statement, const ObjectName& name) {
  ObjectName written = name;
  if (!statement.on_table.empty()) written.owner = statement.on_table;
  ObjectName table_name;
  table_name.name = written.owner;
  const TablePtr table = Find(table_name);
  if (!table || table->view || !table->system_source.empty()) {
    if (statement.if_exists) return;
    RefuseMissing(written, "index");
  }
  TableInfo now = *table;
  const auto key = std::find_if(now.keys.begin(), now.keys.end(),
                                [&](const tsql::KeyInfo& k) { return EqualsIgnoreCase(k.name, name.name); });
  if (key == now.keys.end()) {
    if (statement.if_exists) return;
    RefuseMissing(written, "index");
  }
  if (key->kind == tsql::KeyInfo::Kind::Primary || key->kind == tsql::KeyInfo::Kind::UniqueConstraint) {
    Refuse("An explicit DROP INDEX is not allowed on index '" + tsql::WrittenName(written) +
           "'. It is being used for " + (key->kind == tsql::KeyInfo::Kind::Primary ? "PRIMARY" : "UNIQUE") +
           " KEY constraint enforcement.");
  }
  for (const Text& index : IndexNames(*key, now)) {
    Run(database_, "DROP INDEX " + now.SchemaName() + '.' + tsql::SqlName(index), path_);
  }
  now.keys.erase(key);
  Change(std::move(now));
}

void AccountCatalog::Truncate(const ObjectName& name) {
  const TablePtr table = FindObject(*this, name);
  if (table->view || !table->system_source.empty()) {
    Refuse("Cannot truncate '" + table->name + "' because it is not a table.");
  }
  Run(database_, "DELETE FROM " + table->SqlName(), path_);
  if (table->Identity() == nullptr) return;
  if (table->temporary) {
    // A new one, so that the old one comes back where the transaction is undone.
    ChangeTemporary();
    NeedTemporary(*table).counter = std::make_shared<Counter>();
  } else if (table->counted_identity) {
    WriteCounter(*table, std::nullopt);
  } else {
    RowQuery(database_, path_, "DELETE FROM main.sqlite_sequence WHERE name=?1", table->name).Next();
  }
}

}  // namespace rebate
