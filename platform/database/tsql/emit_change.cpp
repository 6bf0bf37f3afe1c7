#include "platform/database/tsql/emitter.h"

#include <algorithm>

#include "platform/automation/conversion.h"

namespace rebate::tsql {
namespace {

const ColumnInfo& ColumnOf(const TableInfo& table, const Text& name) {
  const ColumnInfo* column = table.FindColumn(name);
  if (column == nullptr) RefuseStatement("Invalid column name '" + name + "'.");
  return *column;
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

[[noreturn]] void RefuseCount(bool listed, std::size_t columns, std::size_t values, std::string_view clause) {
  if (!listed) RefuseStatement("Column name or number of supplied values does not match table definition.");
  const bool more = columns > values;
  const Text what =
      clause == "VALUES" ? "values specified in the VALUES clause" : "values specified in the SELECT list";
  RefuseStatement(Text("There are ") + (more ? "more" : "fewer") + " columns in the INSERT statement than " + what +
                  ". The number of values in the " + (clause == "VALUES" ? "VALUES clause" : "SELECT list") +
                  " must match the number of columns specified in the INSERT statement.");
}

TablePtr NeedTable(TablePtr table) {
  if (table->view) {
    RefuseStatement("View or function '" + table->name +
                    "' is not updatable because the modification affects multiple base tables.");
  }
  return table;
}

}  // namespace

Emitter::Columns Emitter::InsertColumns(const Insert& insert, const TableInfo& table) {
  Columns columns;
  if (insert.columns.empty()) {
    for (const ColumnInfo& column : table.columns) {
      if (!column.identity && !column.computed) columns.push_back(&column);
    }
    return columns;
  }
  for (const Text& name : insert.columns) {
    const ColumnInfo& column = ColumnOf(table, name);
    if (std::find(columns.begin(), columns.end(), &column) != columns.end()) RefuseRepeated(name);
    RefuseComputed(column);
    columns.push_back(&column);
  }
  return columns;
}

// The rows of a values clause. A column that is left to its default drops out of `columns`.
Text Emitter::EmitRows(const Insert& insert, Columns& columns) {
  for (const auto& row : insert.rows) {
    if (row.size() != columns.size()) RefuseCount(!insert.columns.empty(), columns.size(), row.size(), "VALUES");
  }
  for (std::size_t i = columns.size(); i-- > 0;) {
    const auto is_default = [i](const auto& row) { return row[i] == nullptr; };
    if (std::none_of(insert.rows.begin(), insert.rows.end(), is_default)) continue;
    if (!std::all_of(insert.rows.begin(), insert.rows.end(), is_default)) {
      RefuseStatement("DEFAULT must stand in every row of a VALUES clause or in none.");
    }
    columns[i] = nullptr;
  }
  Text sql = "VALUES";
  Scope scope;
  for (const auto& row : insert.rows) {
    sql += sql.back() == ')' ? ",(" : "(";
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (columns[i] == nullptr) continue;
      if (sql.back() != '(') sql += ',';
      sql += ConvertTo(EmitExpression(*row[i], scope), columns[i]->type, Purpose::Assign);
    }
    sql += ')';
  }
  std::erase(columns, nullptr);
  return columns.empty() ? Text("DEFAULT VALUES") : sql;
}

void Emitter::EmitInsert(const Insert& insert) {
  command_.kind = Command::Kind::Insert;
  command_.target = NeedTable(UseObject(insert.table));
  const TableInfo& table = *command_.target;
  Columns columns = InsertColumns(insert, table);
  Text values;
  if (insert.default_values) {
    columns.clear();
    values = "DEFAULT VALUES";
  } else if (insert.select) {
    std::vector<DataType> types;
    for (const ColumnInfo* column : columns) types.push_back(column->type);
    std::vector<Output> outputs;
    const std::size_t parameters = command_.parameters.size();
    const std::set<Text> aliases = aliases_;
    EmitSelect(*insert.select, nullptr, outputs, true, false);
    if (outputs.size() != columns.size())
      RefuseCount(!insert.columns.empty(), columns.size(), outputs.size(), "SELECT");
    command_.parameters.resize(parameters);
    aliases_ = aliases;
    values = EmitSelectInto(*insert.select, types);
  } else {
    values = EmitRows(insert, columns);
  }
  command_.gives_identity =
      std::any_of(columns.begin(), columns.end(), [](const ColumnInfo* c) { return c->identity; });
  Text names;
  for (const ColumnInfo* column : columns) names += (names.empty() ? "" : ",") + SqlName(column->name);
  command_.sql = "INSERT INTO " + table.SqlName() + (names.empty() ? " " : '(' + names + ") ") + values;
}

Text Emitter::EmitWhere(const ExpressionPtr& where, Scope& scope, std::vector<Text> conditions) {
  if (where) conditions.push_back(EmitPredicate(*where, scope));
  Text sql;
  for (const Text& condition : conditions) sql += (sql.empty() ? " WHERE " : " AND ") + condition;
  return sql;
}

TablePtr Emitter::FindTarget(const ObjectName& target, Scope& scope, Text& from, Text& alias) {
  const Source* source = scope.FindSource(target.name);
  if (source == nullptr) {
    // A target under its own name, where the clause knows it under an alias.
    for (const Source& candidate : scope.sources) {
      if (candidate.table && EqualsIgnoreCase(candidate.table->name, target.name)) source = &candidate;
    }
  }
  if (source == nullptr) {
    const TablePtr table = UseObject(target);
    AddTarget(table, target.name, scope);
    source = &scope.sources.back();
    from = table->SqlName() + " AS " + source->sql_alias + " CROSS JOIN " + from;
  }
  if (!source->table)
    RefuseStatement("View or function '" + source->name +
                    "' is not updatable because the modification affects multiple base tables.");
  alias = source->sql_alias;
  return source->table;
}

namespace {

const ColumnInfo& AssignedColumn(const TableInfo& table, const Assignment& assignment) {
  if (!assignment.variable.empty()) RefuseStatement("Incorrect syntax near '" + assignment.variable + "'.");
  const ColumnInfo& column = ColumnOf(table, assignment.column);
  RefuseComputed(column);
  if (column.identity) RefuseStatement("Cannot update identity column '" + column.name + "'.");
  if (!assignment.value) RefuseStatement("Incorrect syntax near the keyword 'DEFAULT'.");
  return column;
}

void RefuseRepeatedColumns(const std::vector<Assignment>& assignments) {
  for (std::size_t i = 0; i < assignments.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (EqualsIgnoreCase(assignments[i].column, assignments[j].column)) RefuseRepeated(assignments[i].column);
    }
  }
}

}  // namespace

void Emitter::EmitUpdate(const Update& update) {
  command_.kind = Command::Kind::Change;
  RefuseRepeatedColumns(update.assignments);
  Scope scope;
  Text sets;
  if (update.from.empty()) {
    command_.target = NeedTable(UseObject(update.target));
    AddTarget(command_.target, update.target.name, scope);
    for (const Assignment& assignment : update.assignments) {
      const ColumnInfo& column = AssignedColumn(*command_.target, assignment);
      sets += (sets.empty() ? "" : ",") + SqlName(column.name) + '=' +
              ConvertTo(EmitExpression(*assignment.value, scope), column.type, Purpose::Assign);
    }
    command_.sql = "UPDATE " + command_.target->SqlName() + " AS " + scope.sources.front().sql_alias + " SET " + sets +
                   EmitWhere(update.where, scope);
    return;
  }
  std::vector<Text> conditions;
  Text from = EmitFrom(update.from, scope, conditions);
  Text alias;
  command_.target = FindTarget(update.target, scope, from, alias);
  Text values;
  for (std::size_t i = 0; i < update.assignments.size(); ++i) {
    const Assignment& assignment = update.assignments[i];
    const ColumnInfo& column = AssignedColumn(*command_.target, assignment);
    const Text name = 'v' + std::to_string(i + 1);
    values += ',' + ConvertTo(EmitExpression(*assignment.value, scope), column.type, Purpose::Assign) + " AS " + name;
    sets += (sets.empty() ? "" : ",") + SqlName(column.name) + "=\"_from\"." + name;
  }
  command_.sql = "UPDATE " + command_.target->SqlName() + " AS \"_target\" SET " + sets + " FROM (SELECT " + alias +
                 "._rowid_ AS r" + values + " FROM " + from + EmitWhere(update.where, scope, std::move(conditions)) +
                 ") AS \"_from\" WHERE \"_target\"._rowid_=\"_from\".r";
}

void Emitter::EmitDelete(const Delete& statement) {
  command_.kind = Command::Kind::Change;
  Scope scope;
  if (statement.from.empty()) {
    command_.target = NeedTable(UseObject(statement.target));
    AddTarget(command_.target, statement.target.name, scope);
    command_.sql = "DELETE FROM " + command_.target->SqlName() + " AS " + scope.sources.front().sql_alias +
                   EmitWhere(statement.where, scope);
    return;
  }
  std::vector<Text> conditions;
  Text from = EmitFrom(statement.from, scope, conditions);
  Text alias;
  command_.target = FindTarget(statement.target, scope, from, alias);
  command_.sql = "DELETE FROM " + command_.target->SqlName() + " WHERE _rowid_ IN (SELECT " + alias + "._rowid_ FROM " +
                 from + EmitWhere(statement.where, scope, std::move(conditions)) + ')';
}

Command EmitInsert(const Surroundings& surroundings, const Insert& insert) {
  Command command;
  Emitter(surroundings, command).EmitInsert(insert);
  return command;
}

Command EmitUpdate(const Surroundings& surroundings, const Update& update) {
  Command command;
  Emitter(surroundings, command).EmitUpdate(update);
  return command;
}

Command EmitDelete(const Surroundings& surroundings, const Delete& statement) {
  Command command;
  Emitter(surroundings, command).EmitDelete(statement);
  return command;
}

}  // namespace rebate::tsql
