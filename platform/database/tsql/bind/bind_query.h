#pragma once

#include "platform/database/tsql/bind/scope.h"

// Binding of queries and of what they read from.
namespace rebate::tsql {

// Where a select stands: an order without `top` has a meaning in a statement alone.
enum class SelectPlace { Statement, Insert, Table, Value, Existence };

// ---- bind_query.cpp ----
bound::QueryPtr BindSelect(BindContext& context, const Select& select, Scope* outer, SelectPlace place);
// The query with its one column brought to `common`'s family, for a comparison with its values.
bound::QueryPtr BringQueryTo(BindContext& context, bound::QueryPtr query, const DataType& common, Scope& scope);
// The query with its columns assigned to the types, one for each.
bound::QueryPtr AssignQueryTo(BindContext& context, bound::QueryPtr query, const std::vector<DataType>& types);
// The count of a `top`: a bigint, or with `percent` a float; null where there is none.
bound::ExpressionPtr BindTop(BindContext& context, Scope& scope, const Expression* count, bool percent);

// ---- bind_union.cpp ----
// Brings the cores of a query to common types.
void MeetCores(BindContext& context, bound::Query& query);
// A core that reads the query as its one source, all columns of it.
bound::Core CoreOver(bound::QueryPtr query, Text name);

// ---- bind_from.cpp ----
// Binds a from clause into `sources`, which the scope then sees, and gives its elements.
std::vector<bound::FromPtr> BindFrom(BindContext& context, Scope& scope, const std::vector<TableSourcePtr>& from,
                                     std::vector<bound::SourcePtr>& sources);
// The source alone as an element of a from clause.
bound::FromPtr FromOf(const bound::Source* source);
// The table as a source under the name.
bound::SourcePtr TableSourceOf(TablePtr table, Text name);
// The `with` tables of a statement, which those behind them and the statement see.
void BindCommonTables(BindContext& context, const CommonTables& tables);

// ---- bind_grouping.cpp ----
// Raises where a column stands outside of an aggregate in a core that groups, and isn't grouped by.
void CheckGrouping(BindContext& context, const bound::Core& core, const std::vector<bound::OrderKey>& order_by);

}  // namespace rebate::tsql
