#pragma once

#include <vector>

#include "platform/database/tsql/bind/bind_context.h"

namespace rebate::tsql {

// The clause of a select in which an expression stands.
enum class Clause { From, Where, GroupBy, Having, Items, OrderBy, Set, Values };

// The sources of one select, and those of the selects around it.
struct Scope {
  Scope* outer = nullptr;
  std::vector<const bound::Source*> sources = {};
  Clause clause = Clause::Values;
  bool in_aggregate = false;
  bool correlated = false;     // a column of an outer scope was used here or in a query inside
  bool has_aggregate = false;  // an aggregate of this select was met
  bool own_columns = false;    // a column of this scope was met, since it was last set back
  bool outer_columns = false;  // one of an outer scope

  struct Hit {
    const bound::Source* source;
    std::size_t column;
  };
  // The column that the name means here or in a select around this one. Raises where it means none or several.
  Hit Resolve(const ColumnReference& reference);
  // The source of the name; null where there is none.
  const bound::Source* FindSource(std::string_view name) const;
};

}  // namespace rebate::tsql
