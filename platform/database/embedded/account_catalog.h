#pragma once

#include <memory>
#include <optional>
#include <unordered_map>

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/print/definition.h"

namespace rebate {

// What stands in an account's file and in the temporary database beside it, read when it is asked for and kept. A read
// that fails raises, and nothing is kept of it.
//
// A temporary table that is dropped is emptied and put aside; one that is then made like it takes its place. So the
// programs that work with it stay prepared, since SQLite sees no change.
class AccountCatalog : public tsql::Catalog {
 private:
  struct Counter {
    std::optional<std::int64_t> last;
  };
  struct TemporaryTable {
    tsql::TablePtr table;
    Text statements;                   // that made it
    std::shared_ptr<Counter> counter;  // of its identity
    bool present = true;               // else it is put aside
    bool altered = false;              // it isn't what its statements made: it can't be put aside
    std::uint64_t put_aside = 0;       // when; the later the larger
    std::shared_ptr<sqlite3_stmt> emptier = {};
  };
  struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
  };
  using TemporaryTables = std::unordered_map<Text, TemporaryTable, NameHash, std::equal_to<>>;

 public:
  // Teaches the connection what the account's tables and the server's own ones need; stays where it is.
  AccountCatalog(sqlite3* database, Text path);
  AccountCatalog(const AccountCatalog&) = delete;
  AccountCatalog& operator=(const AccountCatalog&) = delete;

  tsql::TablePtr Find(const tsql::ObjectName& name) override;
  // Null or the number of the object that `name` (`t`, `dbo.t`, `tempdb..#t`) means.
  std::optional<std::int64_t> ObjectId(std::string_view name);
  static std::int64_t IdOf(std::string_view object);
  // Every permanent table and view, by name.
  std::vector<tsql::TablePtr> Objects();

  const Text& path() const { return path_; }

  // Moves whenever something was made or dropped, here or elsewhere: what was bound before is good only if the
  // objects that it uses have the signatures that they had.
  std::uint64_t epoch() const { return epoch_; }
  // Forgets what it knows of the permanent objects where another connection has changed any.
  void NoticeChanges();

  // What the making of a temporary table of one draft comes to, for whoever makes it often.
  struct Making {
    tsql::TablePtr table;
    Text statements;
  };

  // ---- definitions; each is to run inside Session::Atomically ----
  void Create(const tsql::TableDraft& draft);
  // Of a temporary table: `making` is empty, or of the same draft.
  void Create(const tsql::TableDraft& draft, Making& making);
  void Create(const tsql::CreateIndex& statement);
  // `alter table add`.
  void Add(const tsql::TableDraft& draft);
  void CreateView(const tsql::CreateView& statement);
  void Drop(const tsql::Drop& statement);
  // Empties the table and starts its numbers anew.
  void Truncate(const tsql::ObjectName& name);

  // ---- identities ----
  // To be called behind each insert that put rows into the table: what @@identity is from then on. `given` tells that
  // the statement named the identity column, whose numbers then go on behind the ones that it brought.
  std::optional<std::int64_t> NoteInsert(const tsql::TableInfo& table, bool given);
  // Where the temporary tables' numbers stand, which no failure sets back by itself.
  using Counters = std::vector<std::pair<std::shared_ptr<Counter>, Counter>>;
  Counters MarkCounters() const;
  static void ReturnTo(const Counters& counters);
  // The last number that was drawn for the permanent table of this name, or its seed where none was; null where there
  // is no such table or it draws none.
  std::optional<std::int64_t> LastIdentity(std::string_view name);
  // `set identity_insert`; raises the server's error where the table has no identity or another one is set.
  void SetIdentityInsert(const tsql::ObjectName& name, bool on);
  // Raises the server's error where an insert names the identity column (`given`) and may not, or doesn't and must.
  void CheckIdentityInsert(const tsql::TableInfo& table, bool given) const;
  void ForgetIdentityInsert() noexcept { identity_insert_.clear(); }

  // ---- the transaction around the changes ended ----
  void Committed();
  void RolledBack() noexcept;

  // What stood at one moment, for a statement that fails half way.
  struct Mark {
    TemporaryTables temporary;
  };
  Mark MakeMark() const { return {temporary_}; }
  void ReturnTo(Mark&& mark) noexcept;

 private:
  // So many dropped temporary tables are kept for their next making.
  static constexpr std::size_t kPutAside = 32;

  tsql::TablePtr FindPermanent(const Text& name);
  tsql::TablePtr LoadView(const Text& name);
  // Whether a permanent table has a primary key or a unique constraint of the name: they share one list of names.
  bool HasConstraint(std::string_view name);
  // The object that a text such as `t`, `dbo.t` or `tempdb..#t` names; nothing for a text of more parts.
  static std::optional<tsql::ObjectName> NamedObject(std::string_view text);
  void RefuseTakenNames(const tsql::TableDraft& draft);
  TemporaryTable& NeedTemporary(const tsql::TableInfo& table);
  // Where a table or index of this table changed; `now` is what it is then.
  void Change(tsql::TableInfo now);

  void RefuseTaken(const tsql::TableDraft& draft);
  void CreateTemporary(const tsql::TableDraft& draft, Making& making);
  void DropTemporary(TemporaryTables::iterator found);
  void DropOldestPutAside();
  void DropObject(const tsql::Drop& statement, const tsql::ObjectName& name);
  void DropTable(const tsql::TableInfo& table);
  void DropIndex(const tsql::Drop& statement, const tsql::ObjectName& name);
  void MakeKeys(const tsql::TableInfo& table, std::size_t first);
  void AddByRebuild(const tsql::TableDraft& draft, const tsql::TableInfo& table, const tsql::TableInfo& extended);
  void RefuseMissingValues(const tsql::TableDraft& draft, const tsql::TableInfo& table,
                           const tsql::TableInfo& extended);
  void ChangeTemporary();
  void ChangePermanent();
  std::int64_t SchemaVersion();

  // The last number that the table's counter gave; nothing where none was given yet.
  std::optional<std::int64_t> ReadCounter(const tsql::TableInfo& table);
  void WriteCounter(const tsql::TableInfo& table, std::optional<std::int64_t> last);
  static void GiveNextIdentity(sqlite3_context* context, int count, sqlite3_value** arguments) noexcept;
  std::int64_t NextIdentity(std::string_view key);
  std::optional<std::int64_t> AskNumber(const Text& sql);

  sqlite3* database_;
  Text path_;
  std::uint64_t epoch_ = 1;
  std::int64_t schema_version_ = -1;
  StatementHandle version_statement_, counter_reader_, counter_writer_;
  std::unordered_map<Text, tsql::TablePtr> permanent_;
  bool permanent_changed_ = false;  // in the open transaction
  TemporaryTables temporary_;
  std::optional<TemporaryTables> before_;  // the temporary tables when the open transaction first changed them
  std::uint64_t put_aside_clock_ = 0;
  Text identity_insert_;  // the key of the table that takes numbers for its identity column; empty where none does
  std::optional<std::int64_t> last_drawn_;
};

// The table in which an account keeps its views.
inline constexpr std::string_view kViewTable = "account_views";

}  // namespace rebate
