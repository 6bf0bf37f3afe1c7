#include "platform/database/tsql/emitter.h"

#include <algorithm>
#include <charconv>

#include "platform/automation/conversion.h"

namespace rebate::tsql {
namespace {

// The name that an item has by itself: that of a plain column, else none.
Text OwnName(const SelectItem& item) {
  if (!item.alias.empty()) return item.alias;
  const auto* column = std::get_if<ColumnReference>(&item.expression->node);
  return column != nullptr ? column->name : Text();
}

bool IsGrouped(const SelectCore& core, const std::vector<OrderItem>& order) {
  const auto has_aggregate = [](const ExpressionPtr& e) { return e && Emitter::HasAggregate(*e); };
  return !core.group_by.empty() || core.having ||
         std::any_of(core.items.begin(), core.items.end(),
                     [&](const SelectItem& i) { return has_aggregate(i.expression); }) ||
         std::any_of(order.begin(), order.end(), [&](const OrderItem& o) { return has_aggregate(o.expression); });
}

Text Joined(const std::vector<Text>& texts, std::string_view separator) {
  Text joined;
  for (const Text& text : texts) {
    if (!joined.empty()) joined += separator;
    joined += text;
  }
  return joined;
}

Text WhereOf(const std::vector<Text>& conditions) {
  return conditions.empty() ? Text() : " WHERE " + Joined(conditions, " AND ");
}

std::string_view SqlOperator(SetOperator operation) {
  switch (operation) {
    case SetOperator::Union:
      return " UNION ";
    case SetOperator::UnionAll:
      return " UNION ALL ";
    case SetOperator::Except:
      return " EXCEPT ";
    case SetOperator::Intersect:
      break;
  }
  return " INTERSECT ";
}

// The text of the inner select from which one that groups takes its columns. Its limit keeps SQLite from merging the
// two: it pushes a join into a union only where the select around them doesn't group.
Text NarrowedSource(const Scope& scope, const Text& from, const std::vector<Text>& conditions) {
  Text columns;
  for (std::size_t i = 0; i < scope.wanted.size(); ++i) {
    if (i > 0) columns += ',';
    columns += scope.wanted[i] + " AS c" + std::to_string(i + 1);
  }
  if (columns.empty()) columns = "1";
  return "(SELECT " + columns + " FROM " + from + WhereOf(conditions) + " LIMIT -1) AS " + Text(kNarrowedAlias);
}

}  // namespace

Text Emitter::EmitSelect(const Select& select, const Scope* outer, std::vector<Output>& outputs, bool top_level,
                         bool name_columns) {
  if (!top_level && !select.order_by.empty() && (select.cores.size() > 1 || !select.cores.front().top)) {
    RefuseStatement(
        "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common "
        "table expressions, unless TOP or FOR XML is also specified.");
  }
  if (select.cores.size() > 1) return EmitUnion(select, outer, outputs, name_columns);
  return EmitCore(select.cores.front(), select.order_by, outer, outputs, {}, name_columns);
}

Text Emitter::EmitSelectInto(const Select& select, const std::vector<DataType>& types) {
  std::vector<Output> outputs;
  if (select.cores.size() == 1 && !select.cores.front().distinct) {
    Text sql = EmitCore(select.cores.front(), select.order_by, nullptr, outputs, {types, Purpose::Assign}, false);
    return sql;
  }
  const Text inner = EmitSelect(select, nullptr, outputs, true, true);
  Text items;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    Term term;
    term.sql = "\"_into\".c" + std::to_string(i + 1);
    term.type = outputs[i].type;
    if (i > 0) items += ',';
    items += i < types.size() ? ConvertTo(term, types[i], Purpose::Assign) : term.sql;
  }
  return "SELECT " + items + " FROM (" + inner + ") AS \"_into\"";
}

Text Emitter::EmitUnion(const Select& select, const Scope* outer, std::vector<Output>& outputs, bool name_columns) {
  const Targets targets{UnionTypes(select, outer), Purpose::Cast};
  Text sql;
  for (std::size_t i = 0; i < select.cores.size(); ++i) {
    std::vector<Output> own;
    Text core = EmitCore(select.cores[i], {}, outer, own, targets, name_columns && i == 0);
    if (select.cores[i].top) core = "SELECT * FROM (" + core + ')';
    if (i > 0) sql += SqlOperator(select.operators[i - 1]);
    sql += core;
    if (i == 0) outputs = std::move(own);
  }
  for (Output& output : outputs) {
    output.nullable = true;
    output.identity = false;
  }
  Scope none;
  none.outer = outer;
  const Targets no_targets;
  const Items items{outputs, {}, no_targets};
  return sql + EmitOrder(select.order_by, true, none, items);
}

std::vector<DataType> Emitter::UnionTypes(const Select& select, const Scope* outer) {
  std::vector<DataType> types;
  std::vector<bool> untyped;
  for (const SelectCore& core : select.cores) {
    std::vector<Output> outputs;
    const std::size_t parameters = command_.parameters.size();
    const std::set<Text> aliases = aliases_;
    EmitCore(core, {}, outer, outputs, {}, false);
    command_.parameters.resize(parameters);
    aliases_ = aliases;
    if (types.empty()) {
      for (const Output& output : outputs) types.push_back(output.type);
      continue;
    }
    if (outputs.size() != types.size()) {
      RefuseStatement(
          "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of "
          "expressions in their target lists.");
    }
    for (std::size_t i = 0; i < types.size(); ++i) types[i] = CommonType(types[i], outputs[i].type);
  }
  return types;
}

Text Emitter::EmitCore(const SelectCore& core, const std::vector<OrderItem>& order, const Scope* outer,
                       std::vector<Output>& outputs, const Targets& targets, bool name_columns) {
  if (core.top_percent) RefuseStatement("TOP with PERCENT is not supported.");
  Scope scope;
  scope.outer = outer;
  std::vector<Text> conditions;
  Text from = core.from.empty() ? Text() : EmitFrom(core.from, scope, conditions);
  if (core.where) conditions.push_back(EmitPredicate(*core.where, scope));

  scope.grouped = IsGrouped(core, order);
  scope.narrowed =
      scope.grouped && (scope.sources.size() > 1 || (scope.sources.size() == 1 && !scope.sources[0].table));
  std::vector<Text> groups;
  scope.collecting_group = true;
  for (const ExpressionPtr& group : core.group_by) {
    const Term term = EmitExpression(*group, scope);
    groups.push_back(Collated(term, Render(term)));
  }
  scope.collecting_group = false;
  // SQLite wants a group where only the condition on groups has an aggregate.
  if (core.having && groups.empty()) groups.push_back("NULL");

  Items items{outputs, {}, targets};
  EmitItems(core, scope, items);
  const Text having = core.having ? " HAVING " + EmitPredicate(*core.having, scope) : Text();
  const Text order_by = EmitOrder(order, core.distinct, scope, items);
  Text top;
  if (core.top)
    top = " LIMIT " + ConvertTo(EmitExpression(*core.top, scope), DataType{TypeKind::BigInt, 0, 0, 0}, Purpose::Cast);

  Text sql = core.distinct ? "SELECT DISTINCT " : "SELECT ";
  for (std::size_t i = 0; i < items.texts.size(); ++i) {
    if (i > 0) sql += ',';
    sql += items.texts[i];
    if (name_columns) sql += " AS c" + std::to_string(i + 1);
  }
  if (scope.narrowed) {
    sql += " FROM " + NarrowedSource(scope, from, conditions);
  } else {
    if (!from.empty()) sql += " FROM " + from;
    sql += WhereOf(conditions);
  }
  if (!groups.empty()) sql += " GROUP BY " + Joined(groups, ",");
  return sql + having + order_by + top;
}

void Emitter::AddItem(const Term& term, Text name, Text variable, Items& items) {
  const std::size_t at = items.texts.size();
  const std::vector<DataType>& types = items.targets.types;
  Text sql = at >= types.size()                         ? Render(term)
             : items.targets.purpose == Purpose::Assign ? ConvertTo(term, types[at], Purpose::Assign)
                                                        : Coerce(term, types[at]);
  const DataType type = at < types.size() ? types[at] : term.type;
  Term shown = term;
  shown.type = type;
  // What is assigned is compared by nobody.
  if (items.targets.purpose != Purpose::Assign) sql = Collated(shown, std::move(sql));
  items.texts.push_back(std::move(sql));
  items.outputs.push_back(
      {std::move(name), type, term.nullable, IsText(type.kind), term.identity, std::move(variable)});
}

void Emitter::EmitItems(const SelectCore& core, Scope& scope, Items& items) {
  for (const SelectItem& item : core.items) {
    if (!item.star) {
      AddItem(EmitExpression(*item.expression, scope), OwnName(item), item.variable, items);
      continue;
    }
    if (core.from.empty()) RefuseStatement("Must specify table to select from.");
    bool found = item.star_qualifier.empty();
    for (const Source& source : scope.sources) {
      if (!item.star_qualifier.empty() && !EqualsIgnoreCase(source.name, item.star_qualifier)) continue;
      found = true;
      for (const SourceColumn& column : source.columns) {
        AddItem(EmitHit({&scope, &source, &column}, scope), column.name, {}, items);
      }
    }
    if (!found) {
      RefuseStatement("The column prefix '" + item.star_qualifier +
                      "' does not match with a table name or alias name used in the query.");
    }
  }
}

Text Emitter::EmitOrder(const std::vector<OrderItem>& order, bool distinct, Scope& scope, const Items& items) {
  Text sql;
  for (const OrderItem& item : order) {
    Text key;
    if (const auto* literal = std::get_if<Literal>(&item.expression->node)) {
      const std::string_view digits = literals_[literal->index].text;
      std::size_t position = 0;
      std::from_chars(digits.data(), digits.data() + digits.size(), position);
      if (literal->kind != LiteralKind::Integer || position < 1 || position > items.outputs.size()) {
        RefuseStatement("The ORDER BY position number " + Text(digits) +
                        " is out of range of the number of items in the select list.");
      }
      if (!in_view_) command_.pins.push_back(literal->index);
      key = std::to_string(position);
    } else if (const auto* column = std::get_if<ColumnReference>(&item.expression->node);
               column && column->qualifier.empty()) {
      for (std::size_t i = 0; i < items.outputs.size() && key.empty(); ++i) {
        if (EqualsIgnoreCase(items.outputs[i].name, column->name)) key = std::to_string(i + 1);
      }
    }
    if (key.empty()) {
      const Term term = EmitExpression(*item.expression, scope);
      key = Collated(term, Render(term));
      if (distinct) {
        const auto found = std::find(items.texts.begin(), items.texts.end(), key);
        if (found == items.texts.end()) {
          RefuseStatement("ORDER BY items must appear in the select list if SELECT DISTINCT is specified.");
        }
        key = std::to_string(found - items.texts.begin() + 1);
      }
    }
    sql += (sql.empty() ? " ORDER BY " : ",") + key + (item.descending ? " DESC" : "");
  }
  return sql;
}

namespace {

void DraftInto(const std::vector<Emitter::Output>& outputs, const ObjectName& name, bool keeps_identity,
               TableDraft& draft) {
  draft.name = name;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const Emitter::Output& output = outputs[i];
    if (output.name.empty()) {
      RefuseStatement(
          "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a "
          "name. For other statements, look for empty alias names. Aliases defined as \"\" or [] are not "
          "allowed. Change the alias to a valid name.");
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (EqualsIgnoreCase(outputs[j].name, output.name)) {
        RefuseStatement("Column names in each table must be unique. Column name '" + output.name + "' in table '" +
                        name.name + "' is specified more than once.");
      }
    }
    ColumnDraft column;
    column.info.name = output.name;
    column.info.type = output.type;
    column.info.nullable = output.nullable;
    column.info.identity = keeps_identity && output.identity;
    if (column.info.type.kind == TypeKind::Decimal && column.info.type.scale == kAnyScale) column.info.type.scale = 10;
    draft.columns.push_back(std::move(column));
  }
}

}  // namespace

Command EmitQuery(const Surroundings& surroundings, const Select& select) {
  Command command;
  Emitter emitter(surroundings, command);
  std::vector<Emitter::Output> outputs;
  const Text sql = emitter.EmitSelect(select, nullptr, outputs, true, false);
  const SelectCore& core = select.cores.front();
  if (core.into) {
    const auto identities = std::count_if(outputs.begin(), outputs.end(), [](const auto& o) { return o.identity; });
    const bool one_table = core.from.size() == 1 && std::holds_alternative<NamedTable>(core.from.front()->node);
    const bool keeps = identities == 1 && one_table && select.cores.size() == 1 && core.group_by.empty();
    DraftInto(outputs, *core.into, keeps, command.draft);
    command.kind = Command::Kind::SelectInto;
    TableInfo target;
    target.name = core.into->name;
    target.temporary = target.name.starts_with('#');
    command.sql = "INSERT INTO " + target.SqlName() + ' ' + sql;
    return command;
  }
  command.sql = sql;
  for (Emitter::Output& output : outputs) {
    command.columns.push_back({std::move(output.name), output.type, LowerKey(output.variable)});
  }
  return command;
}

Command EmitCondition(const Surroundings& surroundings, const Expression& condition) {
  Command command;
  Emitter emitter(surroundings, command);
  Scope scope;
  command.sql = "SELECT 1 WHERE " + emitter.EmitPredicate(condition, scope);
  command.columns.push_back({{}, IntType(), {}});
  return command;
}

Command EmitValue(const Surroundings& surroundings, const Expression& expression, const DataType& type) {
  Command command;
  Emitter emitter(surroundings, command);
  Scope scope;
  const Term term = emitter.EmitExpression(expression, scope);
  command.sql = "SELECT " + emitter.ConvertTo(term, type, Purpose::Cast);
  command.columns.push_back({{}, type, {}});
  return command;
}

}  // namespace rebate::tsql
