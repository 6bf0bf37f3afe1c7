#include <algorithm>
#include <set>

#include "platform/database/tsql/eval/program.h"
#include "platform/database/tsql/print/print_change.h"

namespace rebate::tsql {
namespace {

using Columns = std::vector<const bound::Expression*>;

std::optional<Parameter> ParameterOf(const bound::Expression& expression) {
  if (const auto* literal = std::get_if<bound::Literal>(&expression.node)) {
    return Parameter{Parameter::Source::Literal, expression.type, *literal};
  }
  if (const auto* variable = std::get_if<bound::Variable>(&expression.node)) {
    return Parameter{Parameter::Source::Variable, expression.type, {}, {}, variable->key};
  }
  if (const auto* system = std::get_if<bound::System>(&expression.node)) {
    return Parameter{Parameter::Source::System, expression.type, {}, *system};
  }
  return std::nullopt;
}

// The value with its program; what that takes from SQLite is appended to `columns`.
RowValue MakeRowValue(const bound::Expression& expression, Columns& columns) {
  RowValue value;
  value.type = expression.type;
  Calculation calculation = MakeCalculation(expression);
  value.program = std::move(calculation.program);
  for (const bound::Expression* argument : calculation.arguments) {
    if (auto parameter = ParameterOf(*argument)) {
      value.arguments.push_back({std::nullopt, std::move(*parameter)});
    } else {
      value.arguments.push_back({columns.size()});
      columns.push_back(argument);
    }
  }
  return value;
}

// The value as SQLite works it out whole.
RowValue MakeColumnValue(const bound::Expression& expression, Columns& columns) {
  RowValue value;
  value.type = expression.type;
  value.program = "arg:0:" + TypeCode(expression.type);
  value.arguments.push_back({columns.size()});
  columns.push_back(&expression);
  return value;
}

// Whether one of the variables is used in the expression, or in a query inside it.
class VariableUse {
 public:
  explicit VariableUse(const std::set<Text>& variables) : variables_(variables) {}

  bool InExpression(const bound::Expression& expression) const {
    if (const auto* variable = std::get_if<bound::Variable>(&expression.node))
      return variables_.contains(variable->key);
    bool found = InQueries(expression);
    ForEachPart(expression, [&](const bound::Expression& part) { found = found || InExpression(part); });
    return found;
  }

  // Whether a query anywhere in the expression uses one.
  bool InQueriesOf(const bound::Expression& expression) const {
    bool found = InQueries(expression);
    ForEachPart(expression, [&](const bound::Expression& part) { found = found || InQueriesOf(part); });
    return found;
  }

 private:
  bool InQueries(const bound::Expression& expression) const {
    if (const auto* scalar = std::get_if<bound::ScalarQuery>(&expression.node)) return InQuery(*scalar->query);
    if (const auto* exists = std::get_if<bound::Exists>(&expression.node)) return InQuery(*exists->query);
    if (const auto* in = std::get_if<bound::InQuery>(&expression.node)) return InQuery(*in->query);
    return false;
  }

  bool InQuery(const bound::Query& query) const {
    return std::any_of(query.cores.begin(), query.cores.end(), [&](const bound::Core& core) { return InCore(core); });
  }

  bool InCore(const bound::Core& core) const {
    const auto used = [&](const bound::ExpressionPtr& e) { return e && InExpression(*e); };
    return used(core.where) || used(core.having) || used(core.top) ||
           std::any_of(core.items.begin(), core.items.end(), [&](const bound::Item& i) { return used(i.value); }) ||
           std::any_of(core.group_by.begin(), core.group_by.end(), used) ||
           std::any_of(core.sources.begin(), core.sources.end(),
                       [&](const bound::SourcePtr& s) { return s->query && InQuery(*s->query); });
  }

  const std::set<Text>& variables_;
};

void CheckQueries(const VariableUse& use, const bound::Expression& expression) {
  // The engine asks a query with what a variable is when the statement begins.
  if (use.InQueriesOf(expression)) {
    RefuseUnsupported("a subquery that uses a variable which its statement assigns");
  }
}

}  // namespace

void PrintAssigning(const bound::Query& query, Command& command) {
  std::set<Text> variables;
  const bound::Core& core = query.cores.front();
  for (const bound::Item& item : core.items) variables.insert(item.variable);
  const VariableUse use(variables);
  const bool runs_on = std::any_of(core.items.begin(), core.items.end(),
                                   [&](const bound::Item& item) { return use.InExpression(*item.value); });
  if (runs_on && core.distinct) RefuseUnsupported("SELECT DISTINCT that assigns a variable which it uses");
  Columns columns;
  for (const bound::Item& item : core.items) {
    CheckQueries(use, *item.value);
    command.values.push_back(runs_on ? MakeRowValue(*item.value, columns) : MakeColumnValue(*item.value, columns));
    command.values.back().variable = item.variable;
  }
  for (const bound::Expression* column : columns) command.columns.push_back({{}, column->type});
  PrintState state;
  SqlText sql;
  PrintCore(state, query, std::move(columns), sql);
  command.sql = Finish(state, std::move(sql));
}

std::optional<RowValue> ValueWithoutRow(const bound::Expression& expression, const Text& variable) {
  Columns columns;
  RowValue value = MakeRowValue(expression, columns);
  if (!columns.empty()) return std::nullopt;
  value.variable = variable;
  return value;
}

RowUpdate PrintRowUpdate(const bound::Change& change) {
  std::set<Text> variables;
  for (const bound::Assignment& assignment : change.assignments) {
    if (!assignment.variable.empty()) variables.insert(assignment.variable);
  }
  const VariableUse use(variables);
  RowUpdate update;
  Columns columns;
  std::vector<bound::ExpressionPtr> stored;
  for (std::size_t i = 0; i < change.target->columns.size(); ++i) {
    const ColumnInfo& column = change.table->columns[i];
    if (column.computed || (column.identity && !change.table->counted_identity)) continue;
    stored.push_back(bound::Make(bound::Column{change.target, i}, column.type, true));
    update.stored.push_back(i);
    columns.push_back(stored.back().get());
  }
  for (const bound::Assignment& assignment : change.assignments) {
    if (assignment.value) CheckQueries(use, *assignment.value);
    RowValue value;
    if (assignment.value) {
      value = MakeRowValue(*assignment.value, columns);
    } else {
      value.default_sql = change.table->columns[*assignment.column].default_sql;
    }
    value.variable = assignment.variable;
    value.variable_type = assignment.variable_type;
    if (assignment.column) {
      const auto place = std::find(update.stored.begin(), update.stored.end(), *assignment.column);
      value.target = static_cast<std::size_t>(place - update.stored.begin());
    }
    update.values.push_back(std::move(value));
  }
  for (const bound::Expression* column : columns) update.column_types.push_back(column->type);
  update.select = PrintChangedRows(change, columns);
  Text names, marks;
  for (const std::size_t column : update.stored) {
    names += ',' + SqlName(change.table->columns[column].name);
    marks += ",?";
  }
  update.remove = "DELETE FROM " + change.table->SqlName() + " WHERE _rowid_=?";
  update.insert = "INSERT INTO " + change.table->SqlName() + "(_rowid_" + names + ") VALUES(?" + marks + ')';
  return update;
}

}  // namespace rebate::tsql
