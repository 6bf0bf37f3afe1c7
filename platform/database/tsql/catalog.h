#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/database/tsql/ast.h"
#include "platform/database/tsql/lexer.h"

namespace rebate::tsql {

struct ColumnInfo {
  Text name;
  DataType type;
  bool nullable = true;
  bool identity = false;
  bool computed = false;
  Text alias_of;  // of a computed column that is another column under a second name: that column
};

// A view's select and what its tree points into. It stays where it was made.
struct ViewDefinition {
  Text source;
  Shape shape;
  SelectPtr select;
  std::vector<Text> columns;  // empty where the select names them
};

// A table or a view of the account.
struct TableInfo {
  Text name;
  bool temporary = false;
  std::vector<ColumnInfo> columns;             // of a table
  std::shared_ptr<const ViewDefinition> view;  // null for a table
  std::uint64_t signature = 0;                 // equal where two definitions are

  // As SQLite reads it, with its schema.
  Text SqlName() const;
  // Null where there is none of the name.
  const ColumnInfo* FindColumn(std::string_view column) const;
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
