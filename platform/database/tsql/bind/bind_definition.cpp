#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/bind_statement.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/database/tsql/parse/parser.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void RefuseRepeatedName(const Text& column, const Text& table) {
  RefuseStatement("Column names in each table must be unique. Column name '" + column + "' in table '" + table +
                  "' is specified more than once.");
}

void CheckNames(const TableElements& elements, const Text& name, const TableInfo* table) {
  for (std::size_t i = 0; i < elements.columns.size(); ++i) {
    const Text& column = elements.columns[i].name;
    if (table != nullptr && table->FindColumn(column) != nullptr) RefuseRepeatedName(column, name);
    for (std::size_t j = 0; j < i; ++j) {
      if (EqualsIgnoreCase(column, elements.columns[j].name)) RefuseRepeatedName(column, name);
    }
  }
}

// The table with its own columns, those that are computed left out, for the expressions of its computed columns and
// checks. Without an alias of its own: the columns stand for themselves.
bound::SourcePtr OwnColumns(const TableElements& elements, const Text& name, const TableInfo* table) {
  auto source = std::make_unique<bound::Source>();
  source->name = name;
  const auto add = [&](const Text& column, const DataType& type, bool nullable, bool identity) {
    source->columns.push_back({column, type, nullable, identity});
    source->sql_columns.push_back(SqlName(column));
  };
  if (table != nullptr) {
    for (const ColumnInfo& column : table->columns) add(column.name, column.type, column.nullable, column.identity);
  }
  for (const ColumnDefinition& column : elements.columns) {
    if (!column.computed) add(column.name, column.type, column.nullable, column.identity);
  }
  return source;
}

void CheckIdentity(const ColumnDefinition& column) {
  if (!column.identity) return;
  const DataType& type = column.type;
  const bool whole = IsInteger(type.kind) ? type.kind != TypeKind::Bit
                                          : type.kind == TypeKind::Decimal && type.scale == 0 && type.precision <= 18;
  if (whole) return;
  RefuseStatement("Identity column '" + column.name +
                  "' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a scale of 0, "
                  "unencrypted, and constrained to be nonnullable.");
}

BoundElements::Column BindColumnDefinition(BindContext& context, const ColumnDefinition& definition, Scope& own) {
  BoundElements::Column column;
  ColumnInfo& info = column.draft.info;
  info.name = definition.name;
  info.type = definition.type;
  info.nullable = definition.nullable;
  info.identity = definition.identity;
  info.computed = definition.computed != nullptr;
  info.has_default = definition.default_value != nullptr;
  column.draft.identity_seed = definition.identity_seed;
  column.draft.identity_step = definition.identity_step;
  CheckIdentity(definition);
  if (definition.computed) {
    own.clause = Clause::Where;
    column.value = BindValue(context, own, *definition.computed);
    info.type = column.value->type;
    info.nullable = column.value->nullable;
    if (const auto* plain = std::get_if<bound::Column>(&column.value->node)) {
      info.alias_of = plain->source->columns[plain->index].name;
    }
  } else if (definition.default_value) {
    Scope none;
    column.value =
        ConvertTo(context, BindValue(context, none, *definition.default_value), definition.type, Purpose::Assign);
  }
  if (column.value && column.value->has_query) {
    RefuseStatement("Subqueries are not allowed in this context. Only scalar expressions are allowed.");
  }
  return column;
}

}  // namespace

BoundElements BindElements(BindContext& context, const TableElements& tree, const ObjectName& name,
                           const TableInfo* table) {
  CheckNames(tree, name.name, table);
  context.constant_literals = context.in_definition = true;
  BoundElements elements;
  elements.source = OwnColumns(tree, name.name, table);
  elements.keys = tree.keys;
  Scope own;
  own.sources.push_back(elements.source.get());
  for (const ColumnDefinition& definition : tree.columns) {
    elements.columns.push_back(BindColumnDefinition(context, definition, own));
  }
  own.clause = Clause::Where;
  for (const CheckConstraint& check : tree.checks) {
    elements.checks.push_back({check.name, check.column, BindCondition(context, own, *check.condition)});
    if (elements.checks.back().condition->has_query) {
      RefuseStatement("Subqueries are not allowed in this context. Only scalar expressions are allowed.");
    }
  }
  return elements;
}

TableDraft DraftInto(const bound::Query& query, const SelectCore& core, const ObjectName& name) {
  const auto& outputs = query.columns;
  const auto identities = std::count_if(outputs.begin(), outputs.end(), [](const auto& o) { return o.identity; });
  const bool one_table = core.from.size() == 1 && std::holds_alternative<NamedTable>(core.from.front()->node);
  const bool keeps_identity = identities == 1 && one_table && query.cores.size() == 1 && core.group_by.empty();
  TableDraft draft;
  draft.name = name;
  const TablePtr source = keeps_identity ? query.cores.front().sources.front()->table : nullptr;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    if (outputs[i].name.empty()) {
      RefuseStatement(
          "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name. "
          "For other statements, look for empty alias names. Aliases defined as \"\" or [] are not allowed. Change "
          "the alias to a valid name.");
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (EqualsIgnoreCase(outputs[j].name, outputs[i].name)) RefuseRepeatedName(outputs[i].name, name.name);
    }
    ColumnDraft column;
    column.info.name = outputs[i].name;
    column.info.type = outputs[i].type;
    column.info.nullable = outputs[i].nullable;
    column.info.identity = source && outputs[i].identity;
    if (column.info.identity) {
      column.identity_seed = source->identity_seed;
      column.identity_step = source->identity_step;
    }
    draft.columns.push_back(std::move(column));
  }
  return draft;
}

std::shared_ptr<const ViewDefinition> ParseView(Text source, std::vector<Text> columns) {
  auto view = std::make_shared<ViewDefinition>();
  view->source = std::move(source);
  view->columns = std::move(columns);
  ReadTemplate(view->source, view->batch);
  Batch batch = Parse(view->source);
  auto* statement =
      batch.statements.size() == 1 ? std::get_if<SelectStatement>(&batch.statements.front()->node) : nullptr;
  if (statement == nullptr) RefuseStatement("Incorrect syntax: a view is made of one select.");
  view->with = std::move(statement->with);
  view->select = std::move(statement->select);
  return view;
}

std::vector<ColumnInfo> ViewColumns(Catalog& catalog, const ViewDefinition& view, const Text& name) {
  const VariableTypes no_variables;
  BindContext inside{catalog, view.batch.literals, no_variables};
  inside.constant_literals = inside.in_definition = true;
  BindCommonTables(inside, view.with);
  const bound::QueryPtr query = BindSelect(inside, *view.select, nullptr, SelectPlace::Table);
  const auto& outputs = query->columns;
  if (!view.columns.empty() && view.columns.size() != outputs.size()) {
    RefuseStatement("View or function '" + name + "' has " + (view.columns.size() > outputs.size() ? "more" : "fewer") +
                    " column names specified than columns defined.");
  }
  for (std::size_t i = 0; i < outputs.size() && view.columns.empty(); ++i) {
    if (outputs[i].name.empty()) {
      RefuseStatement("Create View or Function failed because no column name was specified for column " +
                      std::to_string(i + 1) + ".");
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (!EqualsIgnoreCase(outputs[i].name, outputs[j].name)) continue;
      RefuseStatement("Column names in each view or function must be unique. Column name '" + outputs[i].name +
                      "' in view or function '" + name + "' is specified more than once.");
    }
  }
  std::vector<ColumnInfo> columns;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    ColumnInfo& column = columns.emplace_back();
    column.name = view.columns.empty() ? outputs[i].name : view.columns[i];
    column.type = outputs[i].type;
    column.nullable = outputs[i].nullable;
  }
  return columns;
}

}  // namespace rebate::tsql
