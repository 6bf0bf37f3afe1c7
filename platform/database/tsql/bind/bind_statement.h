#pragma once

#include "platform/database/tsql/bind/bind_query.h"
#include "platform/database/tsql/print/definition.h"

// Binding of whole statements.
namespace rebate::tsql {

// ---- bind_change.cpp ----
bound::Insert BindInsert(BindContext& context, const Insert& insert);
bound::Change BindUpdate(BindContext& context, const Update& update);
bound::Change BindDelete(BindContext& context, const Delete& statement);

// ---- bind_definition.cpp ----
// A table's elements with their expressions bound. `table` is what the elements are added to; null for a new one.
struct BoundElements {
  struct Column {
    ColumnDraft draft;           // without its texts of SQLite
    bound::ExpressionPtr value;  // of the default or the computation; null where there is none
  };
  struct Check {
    Text name;    // empty where not given
    Text column;  // behind which it was written; empty for one of the table
    bound::ExpressionPtr condition;
  };
  // What the expressions' columns refer to: the table as its own only source.
  bound::SourcePtr source;
  std::vector<Column> columns;
  std::vector<KeyConstraint> keys;
  std::vector<Check> checks;
};
BoundElements BindElements(BindContext& context, const TableElements& elements, const ObjectName& name,
                           const TableInfo* table);
// The table that a select into makes, for the columns of its query.
TableDraft DraftInto(const bound::Query& query, const SelectCore& core, const ObjectName& name);

// Parses a view's select as the account keeps it.
std::shared_ptr<const ViewDefinition> ParseView(Text source, std::vector<Text> columns);
// The columns that the view gives, all with names. Raises where it can't be read: an unknown name, a column without a
// name.
std::vector<ColumnInfo> ViewColumns(Catalog& catalog, const ViewDefinition& view, const Text& name);

}  // namespace rebate::tsql
