#include "platform/database/tsql/bind/bind_query.h"

#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate::tsql {


namespace {

// The name that an item has by itself: that of a plain column, else none.
Text OwnName(const SelectItem& item) {
  if (!item.alias.empty()) return item.alias;
  const auto* column = std::get_if<ColumnReference>(&item.expression->node);
  return column != nullptr ? column->name : Text();
}

void AddItem(bound::Core& core, std::vector<bound::OutputColumn>& columns, bound::ExpressionPtr value, Text name,
             Text variable) {
  columns.push_back({std::move(name), value->type, value->nullable, value->identity});
  core.items.push_back({std::move(value), std::move(variable)});
}

void BindStar(Scope& scope, const SelectItem& item, bound::Core& core, std::vector<bound::OutputColumn>& columns) {
  if (scope.sources.empty()) RefuseStatement("Must specify table to select from.");
  bool found = item.star_qualifier.empty();
  for (const bound::Source* source : scope.sources) {
    if (!item.star_qualifier.empty() && !EqualsIgnoreCase(source->name, item.star_qualifier)) continue;
    found = true;
    for (std::size_t i = 0; i < source->columns.size(); ++i) {
      AddItem(core, columns, BindColumn(*source, i), source->columns[i].name, {});
    }
  }
  if (!found) {
    RefuseStatement("The column prefix '" + item.star_qualifier +
                    "' does not match with a table name or alias name used in the query.");
  }
  scope.own_columns = true;
}

bound::ExpressionPtr BindAssigned(BindContext& context, bound::ExpressionPtr value, const Text& variable) {
  const auto found = context.variables.find(LowerKey(variable));
  if (found == context.variables.end()) RefuseStatement("Must declare the scalar variable \"" + variable + "\".");
  return ConvertTo(context, std::move(value), found->second, Purpose::Cast);
}

void BindItems(BindContext& context, Scope& scope, const SelectCore& tree, bound::Core& core,
               std::vector<bound::OutputColumn>& columns) {
  scope.clause = Clause::Items;
  for (const SelectItem& item : tree.items) {
    if (item.star) {
      BindStar(scope, item, core, columns);
      continue;
    }
    bound::ExpressionPtr value = BindValue(context, scope, *item.expression);
    if (!item.variable.empty()) value = BindAssigned(context, std::move(value), item.variable);
    if (context.measures_texts) value->type = OwnType(context, *value);
    AddItem(core, columns, std::move(value), OwnName(item), LowerKey(item.variable));
  }
}

bound::Core BindCore(BindContext& context, const SelectCore& tree, Scope& scope,
                     std::vector<bound::OutputColumn>& columns) {
  bound::Core core;
  core.distinct = tree.distinct;
  scope.clause = Clause::From;
  core.from = BindFrom(context, scope, tree.from, core.sources);
  scope.clause = Clause::Where;
  if (tree.where) core.where = BindCondition(context, scope, *tree.where);
  scope.clause = Clause::GroupBy;
  for (const auto& group : tree.group_by) core.group_by.push_back(BindValue(context, scope, *group));
  BindItems(context, scope, tree, core, columns);
  scope.clause = Clause::Having;
  if (tree.having) core.having = BindCondition(context, scope, *tree.having);
  scope.clause = Clause::Values;
  core.top = BindTop(context, scope, tree.top.get(), tree.top_percent);
  core.top_percent = tree.top_percent;
  return core;
}

// ---- order ----

std::size_t PositionOf(BindContext& context, const Literal& literal, std::size_t count) {
  const LiteralToken& token = context.literals[literal.index];
  const std::size_t position = WholeNumber<std::size_t>(token.text).value_or(0);
  if (token.kind != LiteralKind::Integer || position < 1 || position > count) {
    RefuseStatement("The ORDER BY position number " + Text(token.text) +
                    " is out of range of the number of items in the select list.");
  }
  if (!context.constant_literals) FixLiteral(context, literal.index);
  return position;
}

std::size_t FindNamed(const std::vector<bound::OutputColumn>& columns, const Expression& expression) {
  const auto* column = std::get_if<ColumnReference>(&expression.node);
  if (column == nullptr || !column->qualifier.empty()) return 0;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (EqualsIgnoreCase(columns[i].name, column->name)) return i + 1;
  }
  return 0;
}

bound::OrderKey BindOrderItem(BindContext& context, Scope& scope, const OrderItem& item, const bound::Query& query) {
  bound::OrderKey key;
  key.descending = item.descending;
  if (const auto* literal = std::get_if<Literal>(&item.expression->node)) {
    key.position = PositionOf(context, *literal, query.columns.size());
  } else {
    key.position = FindNamed(query.columns, *item.expression);
  }
  if (key.position == 0) {
    if (query.cores.size() > 1) {
      RefuseStatement(
          "ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT "
          "operator.");
    }
    key.value = BindValue(context, scope, *item.expression);
    const auto& items = query.cores.front().items;
    for (std::size_t i = 0; i < items.size() && key.position == 0; ++i) {
      if (query.cores.front().distinct && Same(*items[i].value, *key.value, context.literals)) key.position = i + 1;
    }
    if (query.cores.front().distinct && key.position == 0) {
      RefuseStatement("ORDER BY items must appear in the select list if SELECT DISTINCT is specified.");
    }
    if (key.position > 0) key.value = nullptr;
  }
  key.type = key.value ? key.value->type : query.columns[key.position - 1].type;
  return key;
}

void CheckOrderPlace(const Select& select, SelectPlace place) {
  const bool statement = place == SelectPlace::Statement || place == SelectPlace::Insert;
  if (select.order_by.empty() || statement) return;
  if (select.cores.size() == 1 && select.cores.front().top) return;
  RefuseStatement(
      "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table "
      "expressions, unless TOP or FOR XML is also specified.");
}

bool IsGrouped(const bound::Core& core, const Scope& scope) {
  return !core.group_by.empty() || core.having || scope.has_aggregate;
}

void NoteDepth(bound::Query& query) {
  for (const bound::Core& core : query.cores) {
    for (const bound::SourcePtr& source : core.sources) {
      if (source->query) query.depth = std::max(query.depth, source->query->depth + 1);
    }
  }
}

}  // namespace

bound::ExpressionPtr BindTop(BindContext& context, Scope& scope, const Expression* count, bool percent) {
  if (count == nullptr) return nullptr;
  bound::ExpressionPtr value = BindValue(context, scope, *count);
  if (!IsNumber(value->type.kind)) {
    RefuseStatement("The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer.");
  }
  return ConvertTo(context, std::move(value), percent ? FloatType() : TypeOf(TypeKind::BigInt), Purpose::Cast);
}

bound::QueryPtr BindSelect(BindContext& context, const Select& select, Scope* outer, SelectPlace place) {
  CheckOrderPlace(select, place);
  auto query = std::make_unique<bound::Query>();
  query->operators = select.operators;
  Scope scope;
  for (std::size_t i = 0; i < select.cores.size(); ++i) {
    scope = Scope{};
    scope.outer = outer;
    std::vector<bound::OutputColumn> columns;
    query->cores.push_back(BindCore(context, select.cores[i], scope, columns));
    query->cores.back().grouped = IsGrouped(query->cores.back(), scope);
    query->correlated = query->correlated || scope.correlated;
    if (i == 0) {
      query->columns = std::move(columns);
    } else if (columns.size() != query->columns.size()) {
      RefuseStatement(
          "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of expressions "
          "in their target lists.");
    }
    if (select.cores.size() > 1) CheckGrouping(context, query->cores.back(), {});
  }
  if (select.cores.size() > 1) MeetCores(context, *query);
  scope.clause = Clause::OrderBy;
  for (const OrderItem& item : select.order_by) {
    query->order_by.push_back(BindOrderItem(context, scope, item, *query));
  }
  if (select.cores.size() == 1) {
    bound::Core& core = query->cores.front();
    core.grouped = IsGrouped(core, scope);
    CheckGrouping(context, core, query->order_by);
  }
  query->correlated = query->correlated || scope.correlated;
  NoteDepth(*query);
  return query;
}

bound::QueryPtr BringQueryTo(BindContext& context, bound::QueryPtr query, const DataType& common, Scope&) {
  const auto brought = [&](bound::ExpressionPtr value) {
    return BringTo(context, std::move(value), common, Purpose::Match);
  };
  const bool plain = query->cores.size() == 1 && !query->cores.front().distinct && query->order_by.empty();
  if (FamilyOf(query->columns.front().type.kind) == FamilyOf(common.kind)) return query;
  if (!plain) {
    auto outer = std::make_unique<bound::Query>();
    outer->correlated = query->correlated;
    outer->depth = query->depth + 1;
    outer->cores.push_back(CoreOver(std::move(query), "items"));
    outer->columns = outer->cores.front().sources.front()->columns;
    query = std::move(outer);
  }
  bound::Item& item = query->cores.front().items.front();
  item.value = brought(std::move(item.value));
  query->columns.front().type = item.value->type;
  return query;
}

bound::QueryPtr AssignQueryTo(BindContext& context, bound::QueryPtr query, const std::vector<DataType>& types) {
  const bool plain = query->cores.size() == 1 && !query->cores.front().distinct;
  if (!plain) {
    auto outer = std::make_unique<bound::Query>();
    outer->depth = query->depth + 1;
    outer->cores.push_back(CoreOver(std::move(query), "rows"));
    outer->columns = outer->cores.front().sources.front()->columns;
    query = std::move(outer);
  }
  for (std::size_t i = 0; i < types.size(); ++i) {
    bound::ExpressionPtr& value = query->cores.front().items[i].value;
    value = ConvertTo(context, std::move(value), types[i], Purpose::Assign);
    query->columns[i].type = types[i];
  }
  return query;
}

}  // namespace rebate::tsql
