#pragma once

#include <optional>
#include <vector>

#include "platform/database/tsql/catalog.h"

namespace rebate::tsql {

// An expression on its way into a statement of SQLite. A literal is written late, when it is known what type it is
// wanted as, so that it is converted once and not by every row.
struct Term {
  Text sql;
  DataType type;
  bool null_literal = false;
  bool nullable = true;
  bool collated = false;  // SQLite knows by itself that it compares as the account's text
  bool column = false;    // a plain column, whose values are within its type
  bool identity = false;  // a plain column that draws numbers
  bool negated = false;   // of a literal
  std::optional<Literal> literal;
};

struct SourceColumn {
  Text name;  // as the statement knows it
  Text sql;   // as SQLite does
  DataType type;
  bool nullable = true;
  bool collated = false;
  bool identity = false;
};

// A table, view or derived table of a from clause.
struct Source {
  Text name;       // alias, or the table's name
  Text sql_alias;  // quoted
  std::vector<SourceColumn> columns;
  TablePtr table;  // null for views and derived tables
};

// The sources of one select, and those of the selects around it.
struct Scope {
  const Scope* outer = nullptr;
  std::vector<Source> sources;

  // A select that groups over a join takes its columns from an inner select: the columns wanted from it so far.
  bool narrowed = false;
  mutable std::vector<Text> wanted;

  // A select that groups: the columns that may stand outside of an aggregate.
  bool grouped = false;
  std::vector<Text> group_columns;
  int aggregate_depth = 0;
  bool collecting_group = false;  // columns met are such

  struct Hit {
    const Scope* scope;
    const Source* source;
    const SourceColumn* column;
  };
  // The column that the name means here or in a select around this one. Raises where it means none or several.
  Hit Resolve(const ColumnReference& reference) const;
  // The source of the name; null where there is none.
  const Source* FindSource(std::string_view name) const;
};

// Where a column of an inner select is to be found in the outer one.
Text NarrowedColumn(const Scope& scope, const Text& sql);
inline constexpr std::string_view kNarrowedAlias = "\"_grouped\"";

}  // namespace rebate::tsql
