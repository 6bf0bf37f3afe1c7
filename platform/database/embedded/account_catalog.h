#pragma once

#include <optional>
#include <unordered_map>

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/command.h"

namespace rebate {

// What stands in an account's file and in the temporary database beside it, read when it is asked for and kept.
//
// A temporary table that is dropped is emptied and put aside; one that is then made like it takes its place. So the
// programs that work with it stay prepared, since SQLite sees no change.
class AccountCatalog : public tsql::Catalog {
 private:
  struct TemporaryTable {
    tsql::TablePtr table;
    Text statements;       // that made it
    bool present = true;   // else it is put aside
    bool altered = false;  // an index was added: it can't be put aside
  };
  using TemporaryTables = std::unordered_map<Text, TemporaryTable>;

 public:
  AccountCatalog(sqlite3* database, Text path) : database_(database), path_(std::move(path)) {}

  tsql::TablePtr Find(const tsql::ObjectName& name) override;
  // Null or the number of the object that `name` (`t`, `dbo.t`, `tempdb..#t`) means.
  std::optional<std::int64_t> ObjectId(std::string_view name);

  // Moves whenever something was made or dropped, here or elsewhere: what was emitted before is good only if the
  // objects that it uses have the signatures that they had.
  std::uint64_t epoch() const { return epoch_; }
  // Forgets what it knows of the permanent objects where another connection has changed any.
  void NoticeChanges();

  void Create(const tsql::TableDraft& draft);
  void Create(const tsql::CreateIndex& statement);
  void CreateView(const tsql::CreateView& statement);
  void Drop(const tsql::Drop& statement);
  // Empties the table and starts its numbers anew.
  void Truncate(const tsql::ObjectName& name);

  // The transaction around the changes ended.
  void Committed();
  void RolledBack();

  // What stood at one moment, for a statement that fails half way.
  struct Mark {
    TemporaryTables temporary;
  };
  Mark MakeMark() const { return {temporary_}; }
  void ReturnTo(const Mark& mark);

  // The name of the unique index or key over exactly these columns (comma and blank between them) of a table.
  Text UniqueIndexOver(const tsql::TableInfo& table, std::string_view columns);

 private:
  tsql::TablePtr FindPermanent(const Text& name);
  tsql::TablePtr LoadTable(const Text& name, bool temporary);
  tsql::TablePtr LoadView(const Text& name);
  void ReadColumns(tsql::TableInfo& table, std::string_view definition);
  void DropObject(const tsql::Drop& statement, const tsql::ObjectName& name);
  void DropIndex(const tsql::Drop& statement, const tsql::ObjectName& name);
  void DropTemporary(TemporaryTables::iterator found);
  void CreateTemporary(const tsql::TableDraft& draft);
  void ChangeTemporary();
  void ChangePermanent();
  std::int64_t SchemaVersion();

  sqlite3* database_;
  Text path_;
  std::uint64_t epoch_ = 1;
  std::int64_t schema_version_ = -1;
  StatementHandle version_statement_;
  std::unordered_map<Text, tsql::TablePtr> permanent_;
  bool permanent_changed_ = false;  // in the open transaction
  TemporaryTables temporary_;
  std::optional<TemporaryTables> before_;  // the temporary tables when the open transaction first changed them
};

// The table in which an account keeps its views.
inline constexpr std::string_view kViewTable = "account_views";

}  // namespace rebate
