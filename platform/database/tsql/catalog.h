#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/database/tsql/parse/lexer.h"
#include "platform/database/tsql/parse/tree.h"

namespace rebate::tsql {

struct ColumnInfo {
  Text name;
  DataType type;
  bool nullable = true;
  bool identity = false;
  bool computed = false;
  bool has_default = false;
  Text default_sql;  // SQLite's text of the default; empty where there is none
  Text alias_of;     // of a computed column that is another column under a second name: that column
};

// A key or an index of a table.
struct KeyInfo {
  enum class Kind { Primary, UniqueConstraint, UniqueIndex, Index };
  Text name;  // as the statement that made it gave it, or as it was given one
  Kind kind = Kind::Index;
  std::vector<Text> columns;

  bool IsUnique() const { return kind != Kind::Index; }
};

// A view's select and what its tree points into. It stays where it was made.
struct ViewDefinition {
  Text source;
  BatchTemplate batch;
  CommonTables with;
  SelectPtr select;
  std::vector<Text> columns;  // empty where the select names them
};

// A table or a view of the account, or what stands for one of the server's own (information_schema.tables).
struct TableInfo {
  Text name;
  bool temporary = false;
  std::vector<ColumnInfo> columns;             // of a table
  std::vector<KeyInfo> keys;                   // of a table
  std::shared_ptr<const ViewDefinition> view;  // null for a table
  Text system_source;                          // as SQLite reads one of the server's own; empty for the others
  // How the numbers of an identity column are drawn. A counted one draws them by itself where an insert leaves it out
  // (SQLite knows it as a column with a default); the others are SQLite's own row numbers.
  bool counted_identity = false;
  std::int64_t identity_seed = 1;
  std::int64_t identity_step = 1;
  std::uint64_t signature = 0;  // equal where two definitions are

  // As SQLite reads it: a table with its schema, one of the server's own by its source.
  Text SqlName() const;
  // The schema of SQLite that holds it.
  Text SchemaName() const { return temporary ? "tempdb" : "main"; }
  // Null where there is none of the name.
  const ColumnInfo* FindColumn(std::string_view column) const;
  // The identity column; null where there is none.
  const ColumnInfo* Identity() const;
};

using TablePtr = std::shared_ptr<const TableInfo>;

// What an account holds, as its connection sees it.
class Catalog {
 public:
  virtual ~Catalog() = default;
  // The table or view; null where there is none. A name beginning with '#' is that of a temporary table; an owner other
  // than dbo, or a database other than tempdb, holds nothing.
  virtual TablePtr Find(const ObjectName& name) = 0;
};

// `name` as an identifier of SQLite.
Text SqlName(std::string_view name);

// The table or view; raises "Invalid object name 'x'." where there is none.
TablePtr FindObject(Catalog& catalog, const ObjectName& name);

// A name as the server's messages write it: `dbo.t`.
Text WrittenName(const ObjectName& name);

// A map of texts without regard to case goes by this form of them.
Text LowerKey(std::string_view name);

}  // namespace rebate::tsql
