#include "platform/database/tsql/print/command.h"

#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/database/tsql/eval/program.h"
#include "platform/database/tsql/print/print_change.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

Command Finished(BindContext& context, Command command) {
  command.uses = std::move(context.uses);
  command.fixed_literals = std::move(context.fixed_literals);
  return command;
}

SqlText PrintStatement(const bound::Query& query) {
  PrintState state;
  SqlText sql;
  PrintQuery(state, query, false, sql);
  return Finish(state, std::move(sql));
}

// Whether values of the type sort by what a reader sees of them.
bool SortsByItsValue(const DataType& type) {
  return IsText(type.kind) || type.kind == TypeKind::Bit || type.kind == TypeKind::TinyInt ||
         type.kind == TypeKind::SmallInt || type.kind == TypeKind::Int || type.kind == TypeKind::DateTime ||
         type.kind == TypeKind::SmallDateTime || type.kind == TypeKind::Date;
}

// The item that the key is; nothing where it is none of them.
std::optional<std::size_t> ItemOf(const bound::Core& core, const bound::OrderKey& key) {
  if (!key.value) return key.position - 1;
  const auto* wanted = std::get_if<bound::Column>(&key.value->node);
  for (std::size_t i = 0; wanted != nullptr && i < core.items.size(); ++i) {
    const auto* column = std::get_if<bound::Column>(&core.items[i].value->node);
    if (column != nullptr && column->source == wanted->source && column->index == wanted->index) return i;
  }
  return std::nullopt;
}

// Takes the order of a query's rows out of it, where they can be sorted once they are read: the engine would carry each
// of them through a sorter, whole. Empty where it is the engine's to sort.
std::vector<ResultOrder> TakeOrder(bound::Query& query) {
  const bound::Core& core = query.cores.front();
  if (query.cores.size() > 1 || core.top || core.distinct) return {};
  std::vector<ResultOrder> order;
  for (const bound::OrderKey& key : query.order_by) {
    const std::optional<std::size_t> item = ItemOf(core, key);
    if (!item || !SortsByItsValue(core.items[*item].value->type)) return {};
    order.push_back({*item, key.descending});
  }
  query.order_by.clear();
  return order;
}

void MakeSelectInto(const bound::Query& query, const SelectCore& core, Command& command) {
  command.kind = Command::Kind::SelectInto;
  command.draft = DraftInto(query, core, *core.into);
  TableInfo target;
  target.name = core.into->name;
  target.temporary = target.name.starts_with('#');
  command.sql << "INSERT INTO " << target.SqlName() << ' ' << PrintStatement(query);
}

// Whether a key of the table may come to hold, half way, what it holds at neither end.
bool MovesKey(const bound::Change& change) {
  const auto assigned = [&](const Text& name) {
    return std::any_of(change.assignments.begin(), change.assignments.end(), [&](const bound::Assignment& assignment) {
      return assignment.column && EqualsIgnoreCase(change.table->columns[*assignment.column].name, name);
    });
  };
  return std::any_of(change.table->keys.begin(), change.table->keys.end(), [&](const KeyInfo& key) {
    return key.IsUnique() && std::any_of(key.columns.begin(), key.columns.end(), assigned);
  });
}

SqlText PrintOne(const bound::Expression& value) {
  PrintState state;
  SqlText sql;
  sql << "SELECT ";
  PrintValue(state, value, sql);
  return Finish(state, std::move(sql));
}

// Whether the insert is of one row, whose values say nothing but themselves.
bool IsRowOfLiterals(const bound::Insert& insert) {
  return insert.rows.size() == 1 && !insert.gives_identity &&
         std::all_of(insert.rows.front().begin(), insert.rows.front().end(), [](const bound::ExpressionPtr& value) {
           return value && (std::holds_alternative<bound::Literal>(value->node) ||
                            std::holds_alternative<bound::Null>(value->node));
         });
}

Text PrintDefinition(const bound::Expression& expression) {
  PrintState state;
  state.in_definition = true;
  SqlText sql;
  PrintValue(state, expression, sql);
  return sql.text;
}

}  // namespace

Text WithRows(const Command& insert, std::size_t rows) {
  const std::string_view row = std::string_view(insert.sql.text).substr(*insert.row);
  Text text = insert.sql.text;
  text.reserve(text.size() + (rows - 1) * (row.size() + 1));
  for (std::size_t i = 1; i < rows; ++i) text.append(",").append(row);
  return text;
}

Command MakeQuery(BindContext& context, const SelectStatement& statement) {
  BindCommonTables(context, statement.with);
  const SelectCore& core = statement.select->cores.front();
  context.measures_texts = core.into.has_value();
  const bound::QueryPtr query = BindSelect(context, *statement.select, nullptr, SelectPlace::Statement);
  Command command;
  if (core.into) {
    MakeSelectInto(*query, core, command);
  } else if (!query->cores.front().items.front().variable.empty()) {
    command.kind = Command::Kind::Assign;
    PrintAssigning(*query, command);
  } else {
    command.order = TakeOrder(*query);
    command.sql = PrintStatement(*query);
    for (const bound::OutputColumn& column : query->columns) command.columns.push_back({column.name, column.type});
  }
  return Finished(context, std::move(command));
}

Command MakeInsert(BindContext& context, const Insert& insert) {
  const bound::Insert bound_insert = BindInsert(context, insert);
  Command command;
  command.kind = Command::Kind::Insert;
  command.target = bound_insert.table;
  command.gives_identity = bound_insert.gives_identity;
  command.sql = PrintInsert(bound_insert);
  command = Finished(context, std::move(command));
  if (IsRowOfLiterals(bound_insert) && command.fixed_literals.empty()) command.row = command.sql.text.rfind('(');
  return command;
}

Command MakeUpdate(BindContext& context, const Update& update) {
  const bound::Change change = BindUpdate(context, update);
  Command command;
  command.kind = Command::Kind::Change;
  command.target = change.table;
  command.row_by_row = std::any_of(change.assignments.begin(), change.assignments.end(),
                                   [](const bound::Assignment& a) { return !a.variable.empty(); });
  if (command.row_by_row || MovesKey(change)) command.rows = PrintRowUpdate(change);
  if (!command.row_by_row) command.sql = PrintUpdate(change);
  return Finished(context, std::move(command));
}

Command MakeDelete(BindContext& context, const Delete& statement) {
  const bound::Change change = BindDelete(context, statement);
  Command command;
  command.kind = Command::Kind::Change;
  command.target = change.table;
  command.sql = PrintDelete(change);
  return Finished(context, std::move(command));
}

Command MakeCondition(BindContext& context, const Expression& condition) {
  Scope none;
  const bound::ExpressionPtr bound_condition = BindCondition(context, none, condition);
  Command command;
  PrintState state;
  SqlText sql;
  sql << "SELECT 1 WHERE ";
  PrintCondition(state, *bound_condition, sql);
  command.sql = Finish(state, std::move(sql));
  command.columns.push_back({{}, IntType()});
  return Finished(context, std::move(command));
}

Command MakeAssignment(BindContext& context, const Expression& expression, const Text& variable, const DataType& type) {
  Scope none;
  const bound::ExpressionPtr value = ConvertForVariable(context, BindValue(context, none, expression), type);
  Command command;
  command.kind = Command::Kind::Assign;
  if (auto row_value = ValueWithoutRow(*value, variable)) {
    command.values.push_back(std::move(*row_value));
    return Finished(context, std::move(command));
  }
  RowValue row_value;
  row_value.variable = variable;
  row_value.type = type;
  row_value.program = "arg:0:" + TypeCode(type);
  row_value.arguments.push_back({0});
  command.values.push_back(std::move(row_value));
  command.sql = PrintOne(*value);
  command.columns.push_back({{}, type});
  return Finished(context, std::move(command));
}

Command MakeValue(BindContext& context, const Expression& expression, const DataType& type) {
  Scope none;
  const bound::ExpressionPtr value = ConvertTo(context, BindValue(context, none, expression), type, Purpose::Cast);
  Command command;
  command.sql = PrintOne(*value);
  command.columns.push_back({{}, type});
  return Finished(context, std::move(command));
}

TableDraft DraftTable(BindContext& context, const TableElements& elements, const ObjectName& name,
                      const TableInfo* table) {
  BoundElements bound_elements = BindElements(context, elements, name, table);
  TableDraft draft;
  draft.name = name;
  draft.keys = std::move(bound_elements.keys);
  for (BoundElements::Column& column : bound_elements.columns) {
    if (column.value) {
      Text& sql = column.draft.info.computed ? column.draft.computed_sql : column.draft.default_sql;
      sql = PrintDefinition(*column.value);
    }
    draft.columns.push_back(std::move(column.draft));
  }
  for (const BoundElements::Check& check : bound_elements.checks) {
    draft.checks.push_back({check.name, PrintDefinition(*check.condition), check.column});
  }
  return draft;
}

}  // namespace rebate::tsql
