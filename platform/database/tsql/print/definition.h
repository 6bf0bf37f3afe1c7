#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/database/tsql/catalog.h"

// Definitions of tables and indexes as text of SQLite.
//
// What a server knows of a table and SQLite doesn't is told by the names that SQLite keeps: an index's by the words in
// front of it, a check's by the column behind it, an identity's by its default.
namespace rebate::tsql {

struct ColumnDraft {
  ColumnInfo info;
  std::int64_t identity_seed = 1;
  std::int64_t identity_step = 1;
  Text default_sql;   // SQLite's text of the default; empty where there is none
  Text computed_sql;  // empty where it isn't computed; columns of the table stand in it without a qualifier
};

struct CheckDraft {
  Text name;
  Text condition_sql;  // columns of the table stand in it without a qualifier
  Text column = {};    // behind which it was written; empty for one of the table
};

// A table to be made, or columns, keys and checks to be added to one. A key or check without a name gets one.
struct TableDraft {
  ObjectName name;
  std::vector<ColumnDraft> columns;
  std::vector<KeyConstraint> keys;
  std::vector<CheckDraft> checks;
};

// The table as it will be: what a catalog tells of it. Raises the server's error for what makes no table: a name given
// twice, a key over a column that isn't there, a second identity.
TableInfo InfoOf(const TableDraft& draft);
// The same for `table` with the draft's columns and keys added.
TableInfo ExtendedInfo(const TableInfo& table, const TableDraft& draft);

// The statements that make the table, keys and all, and set where its identity starts.
std::vector<Text> CreateStatements(const TableDraft& draft);
// `create table` and the identity's start, without the keys that are indexes.
std::vector<Text> TableStatements(const TableDraft& draft, const TableInfo& info);
// Sets where the identity of the draft's columns starts; empty where SQLite counts or there is none.
Text CounterStatement(const TableDraft& draft, const TableInfo& info);
// The statements that make a key or an index of a table. A key that SQLite's row numbers are takes none.
std::vector<Text> KeyStatements(const KeyInfo& key, const TableInfo& table);
// The key that the statement makes; raises the server's error for a column that the table doesn't have.
KeyInfo KeyOf(const CreateIndex& statement, const TableInfo& table);

// `alter table add column` for each of the draft's columns. Nothing where SQLite can't add one as a server would, so
// that the table must be made anew. `extended` is the table with its addition.
std::optional<std::vector<Text>> AddStatements(const TableDraft& draft, const TableInfo& extended);
// `create table` like `definition`, the text that made the table, with the draft's columns and checks behind its own.
Text ExtendedStatement(std::string_view definition, const TableDraft& draft, const TableInfo& extended);

// ---- names inside SQLite ----

// The name under which an index stands in SQLite, where names of indexes are one for the whole database.
Text IndexName(std::string_view table, const KeyInfo& key);
// The names of all indexes that the key stands as.
std::vector<Text> IndexNames(const KeyInfo& key, const TableInfo& table);
// The key whose name and kind the index of the table tells; a plain index where it isn't `unique`. Nothing for the
// indexes that stand beside another one.
std::optional<KeyInfo> ParseIndexName(std::string_view table, std::string_view index, bool unique);
// The name of a check from what SQLite calls it, and its column.
CheckDraft ParseCheckName(std::string_view name);
// The name of the key that is the table's row number, from the text that made the table; empty where there is none.
Text RowNumberKey(std::string_view definition, const ColumnInfo& column);
// The column that a computed one repeats under a second name, from the text that made the table; empty where it
// doesn't.
Text AliasOf(std::string_view definition, const ColumnInfo& column);
// " COLLATE x" as the column's type wants it.
Text CollationText(const DataType& type);

// Gives the next number of the identity of the table that its argument names, in small letters.
inline constexpr std::string_view kNextIdentity = "account_next_identity";
// SQLite's text of a default that is the moment of the insert (`default getdate()`).
inline constexpr std::string_view kNowDefault = "t_now()";
// The check that keeps row numbers inside an int.
inline constexpr std::string_view kIdentityCheck = "account identity";
// The table in which an account keeps the numbers of identities that SQLite doesn't count.
inline constexpr std::string_view kCounterTable = "account_counters";

// kRangeFrom(low, high) and kRangeTo(low, high): the ends, by kTextCollation, of what holds every text from low to high
// by kTextOrder; that is one text where the two are equal, else everything.
inline constexpr std::string_view kRangeFrom = "t_range_from";
inline constexpr std::string_view kRangeTo = "t_range_to";

// The names of the collations that every connection knows. kTextCollation: the account's texts as equal or not, in an
// order of its own that no library changes; columns of text and their indexes go by it. kTextOrder: the order in which
// a Chinese account sorts, equal where kTextCollation is. kNumberCollation: decimals, kept as their keys.
inline constexpr std::string_view kTextCollation = "account_text";
inline constexpr std::string_view kTextOrder = "account_order";
inline constexpr std::string_view kNumberCollation = "account_number";

}  // namespace rebate::tsql
