#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/bind_query.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

constexpr int kMaxViewDepth = 32;

Text SqlColumn(std::size_t index) {
  return 'c' + std::to_string(index + 1);
}

// The columns of a query as those of a table, under `names` where there are any. Raises for one without a name and for
// a name that comes twice.
void NameColumns(std::vector<bound::OutputColumn>& columns, const std::vector<Text>& names, const Text& table) {
  if (!names.empty() && names.size() != columns.size()) {
    RefuseStatement("'" + table + "' has " + (names.size() > columns.size() ? "fewer" : "more") +
                    " columns than were specified in the column list.");
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i < names.size()) columns[i].name = names[i];
    if (columns[i].name.empty()) {
      RefuseStatement("No column name was specified for column " + std::to_string(i + 1) + " of '" + table + "'.");
    }
    columns[i].identity = false;
    for (std::size_t j = 0; j < i; ++j) {
      if (!EqualsIgnoreCase(columns[j].name, columns[i].name)) continue;
      RefuseStatement("The column '" + columns[i].name + "' was specified multiple times for '" + table + "'.");
    }
  }
}

bound::SourcePtr QuerySource(bound::QueryPtr query, Text name, const std::vector<Text>& names) {
  auto source = std::make_unique<bound::Source>();
  source->name = std::move(name);
  source->columns = query->columns;
  NameColumns(source->columns, names, source->name);
  for (std::size_t i = 0; i < source->columns.size(); ++i) source->sql_columns.push_back(SqlColumn(i));
  source->query = std::move(query);
  return source;
}

// A view's select is bound with the literals of its own, which become constants.
bound::SourcePtr ViewSource(BindContext& context, const ViewDefinition& view, Text name) {
  if (context.view_depth == kMaxViewDepth) RefuseStatement("Maximum view nesting level exceeded (limit 32).");
  BindContext inside{context.catalog, view.batch.literals, context.variables};
  inside.constant_literals = true;
  inside.in_definition = true;
  inside.view_depth = context.view_depth + 1;
  BindCommonTables(inside, view.with);
  bound::QueryPtr query = BindSelect(inside, *view.select, nullptr, SelectPlace::Table);
  context.uses.insert(context.uses.end(), inside.uses.begin(), inside.uses.end());
  return QuerySource(std::move(query), std::move(name), view.columns);
}

bound::SourcePtr CommonSource(bound::CommonTablePtr table, Text name) {
  auto source = std::make_unique<bound::Source>();
  source->name = std::move(name);
  source->columns = table->columns;
  for (std::size_t i = 0; i < source->columns.size(); ++i) source->sql_columns.push_back(SqlColumn(i));
  source->common = std::move(table);
  return source;
}

bound::CommonTablePtr FindCommon(const BindContext& context, const ObjectName& name) {
  if (!name.owner.empty() || !name.database.empty()) return nullptr;
  const auto found = std::find_if(context.common_tables.rbegin(), context.common_tables.rend(),
                                  [&](const auto& table) { return EqualsIgnoreCase(table->name, name.name); });
  return found == context.common_tables.rend() ? nullptr : *found;
}

bound::SourcePtr NamedSource(BindContext& context, const NamedTable& named) {
  Text name = named.alias.empty() ? named.name.name : named.alias;
  if (auto common = FindCommon(context, named.name)) return CommonSource(std::move(common), std::move(name));
  TablePtr table = UseObject(context, named.name);
  if (table->view) return ViewSource(context, *table->view, std::move(name));
  return TableSourceOf(std::move(table), std::move(name));
}

class FromBinder {
 public:
  FromBinder(BindContext& context, Scope& scope, std::vector<bound::SourcePtr>& sources)
      : context_(context), scope_(scope), sources_(sources) {}

  bound::FromPtr Bind(const TableSource& tree) {
    if (const auto* named = std::get_if<NamedTable>(&tree.node)) return FromOf(Add(NamedSource(context_, *named)));
    if (const auto* derived = std::get_if<DerivedTable>(&tree.node)) {
      bound::QueryPtr query = BindSelect(context_, *derived->select, scope_.outer, SelectPlace::Table);
      return FromOf(Add(QuerySource(std::move(query), derived->alias, derived->columns)));
    }
    return BindJoin(std::get<Join>(tree.node));
  }

 private:
  bound::FromPtr BindJoin(const Join& join) {
    const std::size_t first = sources_.size();
    bound::Joined joined{join.kind, Bind(*join.left), nullptr, nullptr};
    const std::size_t middle = sources_.size();
    joined.right = Bind(*join.right);
    if (join.condition) joined.condition = BindCondition(context_, scope_, *join.condition);
    if (join.kind == JoinKind::Right || join.kind == JoinKind::Full) MakeNullable(first, middle);
    if (join.kind == JoinKind::Left || join.kind == JoinKind::Full) MakeNullable(middle, sources_.size());
    auto from = std::make_unique<bound::From>();
    from->node = std::move(joined);
    return from;
  }

  const bound::Source* Add(bound::SourcePtr source) {
    if (scope_.FindSource(source->name) != nullptr) {
      RefuseStatement("The correlation name '" + source->name + "' is specified multiple times in a FROM clause.");
    }
    sources_.push_back(std::move(source));
    scope_.sources.push_back(sources_.back().get());
    return sources_.back().get();
  }

  void MakeNullable(std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; ++i) {
      for (bound::OutputColumn& column : sources_[i]->columns) column.nullable = true;
    }
  }

  BindContext& context_;
  Scope& scope_;
  std::vector<bound::SourcePtr>& sources_;
};

bool Names(const TableSource& tree, const Text& table);

bool Names(const Select& select, const Text& table) {
  return std::any_of(select.cores.begin(), select.cores.end(), [&](const SelectCore& core) {
    return std::any_of(core.from.begin(), core.from.end(), [&](const auto& source) { return Names(*source, table); });
  });
}

bool Names(const TableSource& tree, const Text& table) {
  if (const auto* named = std::get_if<NamedTable>(&tree.node)) {
    return named->name.owner.empty() && EqualsIgnoreCase(named->name.name, table);
  }
  if (const auto* derived = std::get_if<DerivedTable>(&tree.node)) return Names(*derived->select, table);
  const Join& join = std::get<Join>(tree.node);
  return Names(*join.left, table) || Names(*join.right, table);
}

}  // namespace

bound::FromPtr FromOf(const bound::Source* source) {
  auto from = std::make_unique<bound::From>();
  from->node = source;
  return from;
}

bound::SourcePtr TableSourceOf(TablePtr table, Text name) {
  auto source = std::make_unique<bound::Source>();
  source->name = std::move(name);
  for (const ColumnInfo& column : table->columns) {
    source->columns.push_back({column.name, column.type, column.nullable, column.identity});
    source->sql_columns.push_back(SqlName(column.alias_of.empty() ? column.name : column.alias_of));
  }
  source->table = std::move(table);
  return source;
}

std::vector<bound::FromPtr> BindFrom(BindContext& context, Scope& scope, const std::vector<TableSourcePtr>& from,
                                     std::vector<bound::SourcePtr>& sources) {
  FromBinder binder(context, scope, sources);
  std::vector<bound::FromPtr> bound_from;
  for (const TableSourcePtr& source : from) bound_from.push_back(binder.Bind(*source));
  return bound_from;
}

void BindCommonTables(BindContext& context, const CommonTables& tables) {
  for (std::size_t i = 0; i < tables.size(); ++i) {
    const CommonTable& tree = tables[i];
    for (std::size_t j = 0; j < i; ++j) {
      if (!EqualsIgnoreCase(tables[j].name, tree.name)) continue;
      RefuseStatement("Duplicate common table expression name '" + tree.name + "' was specified.");
    }
    if (Names(*tree.select, tree.name)) RefuseUnsupported("recursive common table expression");
    auto table = std::make_shared<bound::CommonTable>();
    table->name = tree.name;
    table->query = BindSelect(context, *tree.select, nullptr, SelectPlace::Table);
    table->columns = table->query->columns;
    NameColumns(table->columns, tree.columns, tree.name);
    context.common_tables.push_back(std::move(table));
  }
}

}  // namespace rebate::tsql
