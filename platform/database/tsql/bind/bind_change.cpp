#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/bind_statement.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {

namespace {

std::size_t ColumnOf(const TableInfo& table, const Text& name) {
  const ColumnInfo* column = table.FindColumn(name);
  if (column == nullptr) RefuseStatement("Invalid column name '" + name + "'.");
  return static_cast<std::size_t>(column - table.columns.data());
}

[[noreturn]] void RefuseRepeated(const Text& name) {
  RefuseStatement("The column name '" + name +
                  "' is specified more than once in the SET clause or column list of an INSERT. A column cannot be "
                  "assigned more than one value in the same clause. Modify the clause to make sure that a column is "
                  "updated only once. If this statement updates or inserts columns into a view, column aliasing can "
                  "conceal the duplication in your code.");
}

void RefuseComputed(const ColumnInfo& column) {
  if (!column.computed) return;
  RefuseStatement("The column \"" + column.name +
                  "\" cannot be modified because it is either a computed column or is the result of a UNION operator.");
}

[[noreturn]] void RefuseCount(bool listed, std::size_t columns, std::size_t values, bool from_rows) {
  if (!listed) RefuseStatement("Column name or number of supplied values does not match table definition.");
  const Text clause = from_rows ? "VALUES clause" : "SELECT list";
  RefuseStatement(Text("There are ") + (columns > values ? "more" : "fewer") +
                  " columns in the INSERT statement than values specified in the " + clause +
                  ". The number of values in the " + clause +
                  " must match the number of columns specified in the INSERT statement.");
}

TablePtr NeedTable(TablePtr table) {
  if (table->view) {
    RefuseStatement("View or function '" + table->name +
                    "' is not updatable because the modification affects multiple base tables.");
  }
  if (!table->system_source.empty()) RefuseStatement("Ad hoc updates to system catalogs are not allowed.");
  return table;
}

// ---- insert ----

std::vector<std::size_t> InsertColumns(const Insert& insert, const TableInfo& table) {
  std::vector<std::size_t> columns;
  if (insert.columns.empty()) {
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      if (!table.columns[i].identity && !table.columns[i].computed) columns.push_back(i);
    }
    return columns;
  }
  for (const Text& name : insert.columns) {
    const std::size_t column = ColumnOf(table, name);
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) RefuseRepeated(name);
    RefuseComputed(table.columns[column]);
    columns.push_back(column);
  }
  return columns;
}

void BindRows(BindContext& context, const Insert& insert, bound::Insert& result) {
  Scope scope;
  for (const auto& row : insert.rows) {
    if (row.size() != result.columns.size()) {
      RefuseCount(!insert.columns.empty(), result.columns.size(), row.size(), true);
    }
    std::vector<bound::ExpressionPtr>& values = result.rows.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      const ColumnInfo& column = result.table->columns[result.columns[i]];
      if (!row[i] && column.identity) {
        RefuseStatement("DEFAULT or NULL are not allowed as explicit identity values.");
      }
      values.push_back(row[i] ? ConvertTo(context, BindValue(context, scope, *row[i]), column.type, Purpose::Assign)
                              : nullptr);
    }
  }
}

void BindInsertSelect(BindContext& context, const Insert& insert, bound::Insert& result) {
  bound::QueryPtr query = BindSelect(context, *insert.select, nullptr, SelectPlace::Insert);
  if (query->columns.size() != result.columns.size()) {
    RefuseCount(!insert.columns.empty(), result.columns.size(), query->columns.size(), false);
  }
  std::vector<DataType> types;
  for (const std::size_t column : result.columns) types.push_back(result.table->columns[column].type);
  result.query = AssignQueryTo(context, std::move(query), types);
}

// ---- update and delete ----

const bound::Source* FindTarget(const ObjectName& name, const Scope& scope) {
  if (const bound::Source* source = scope.FindSource(name.name)) return source;
  // A target under its own name, where the clause knows it under an alias.
  for (const bound::Source* source : scope.sources) {
    if (source->table && EqualsIgnoreCase(source->table->name, name.name)) return source;
  }
  return nullptr;
}

void BindTarget(BindContext& context, const ObjectName& name, const std::vector<TableSourcePtr>& from, Scope& scope,
                bound::Change& change) {
  scope.clause = Clause::From;
  change.from = BindFrom(context, scope, from, change.sources);
  change.target = from.empty() ? nullptr : FindTarget(name, scope);
  if (change.target == nullptr) {
    change.sources.push_back(TableSourceOf(NeedTable(UseObject(context, name)), name.name));
    change.target = change.sources.back().get();
    scope.sources.push_back(change.target);
    change.from.insert(change.from.begin(), FromOf(change.target));
  }
  if (!change.target->table) {
    RefuseStatement("View or function '" + change.target->name +
                    "' is not updatable because the modification affects multiple base tables.");
  }
  change.table = NeedTable(change.target->table);
}

void CheckQualifier(const Assignment& assignment, const bound::Change& change) {
  const Text& qualifier = assignment.qualifier;
  if (qualifier.empty() || EqualsIgnoreCase(qualifier, change.target->name) ||
      EqualsIgnoreCase(qualifier, change.table->name)) {
    return;
  }
  RefuseStatement("The multi-part identifier \"" + qualifier + '.' + assignment.column + "\" could not be bound.");
}

std::size_t AssignedColumn(const Assignment& assignment, const bound::Change& change) {
  CheckQualifier(assignment, change);
  const std::size_t column = ColumnOf(*change.table, assignment.column);
  const ColumnInfo& info = change.table->columns[column];
  RefuseComputed(info);
  if (info.identity) RefuseStatement("Cannot update identity column '" + info.name + "'.");
  for (const bound::Assignment& earlier : change.assignments) {
    if (earlier.column == column) RefuseRepeated(assignment.column);
  }
  return column;
}

bound::Assignment BindAssignment(BindContext& context, Scope& scope, const Assignment& assignment,
                                 const bound::Change& change) {
  bound::Assignment result;
  if (!assignment.variable.empty()) {
    result.variable = LowerKey(assignment.variable);
    const auto found = context.variables.find(result.variable);
    if (found == context.variables.end()) {
      RefuseStatement("Must declare the scalar variable \"" + assignment.variable + "\".");
    }
    result.variable_type = found->second;
  }
  DataType type = result.variable_type;
  if (!assignment.column.empty()) {
    result.column = AssignedColumn(assignment, change);
    type = change.table->columns[*result.column].type;
  }
  if (!assignment.value) return result;
  result.value = BindValue(context, scope, *assignment.value);
  result.value = result.column ? ConvertTo(context, std::move(result.value), type, Purpose::Assign)
                               : ConvertForVariable(context, std::move(result.value), type);
  return result;
}

// Which rows an update or a delete changes.
template <typename Statement>
void BindRestriction(BindContext& context, Scope& scope, const Statement& statement, bound::Change& change) {
  scope.clause = Clause::Where;
  if (statement.where) change.where = BindCondition(context, scope, *statement.where);
  Scope none;
  change.top = BindTop(context, none, statement.top.count.get(), statement.top.percent);
  change.top_percent = statement.top.percent;
}

}  // namespace

bound::Insert BindInsert(BindContext& context, const Insert& insert) {
  BindCommonTables(context, insert.with);
  bound::Insert result;
  result.table = NeedTable(UseObject(context, insert.table));
  Scope none;
  result.top = BindTop(context, none, insert.top.count.get(), insert.top.percent);
  result.top_percent = insert.top.percent;
  result.columns = InsertColumns(insert, *result.table);
  if (insert.default_values) {
    result.columns.clear();
  } else if (insert.select) {
    BindInsertSelect(context, insert, result);
  } else {
    BindRows(context, insert, result);
  }
  result.gives_identity = std::any_of(result.columns.begin(), result.columns.end(),
                                      [&](std::size_t column) { return result.table->columns[column].identity; });
  return result;
}

bound::Change BindUpdate(BindContext& context, const Update& update) {
  BindCommonTables(context, update.with);
  bound::Change change;
  Scope scope;
  BindTarget(context, update.target, update.from, scope, change);
  scope.clause = Clause::Set;
  for (const Assignment& assignment : update.assignments) {
    change.assignments.push_back(BindAssignment(context, scope, assignment, change));
  }
  BindRestriction(context, scope, update, change);
  return change;
}

bound::Change BindDelete(BindContext& context, const Delete& statement) {
  BindCommonTables(context, statement.with);
  bound::Change change;
  Scope scope;
  BindTarget(context, statement.target, statement.from, scope, change);
  BindRestriction(context, scope, statement, change);
  return change;
}

}  // namespace rebate::tsql
