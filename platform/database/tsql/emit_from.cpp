#include "platform/database/tsql/emitter.h"

#include <algorithm>

#include "platform/automation/conversion.h"

namespace rebate::tsql {
namespace {

constexpr int kMaxViewDepth = 32;

std::string_view SqlJoin(JoinKind kind) {
  switch (kind) {
    case JoinKind::Inner:
      return " INNER JOIN ";
    case JoinKind::Left:
      return " LEFT JOIN ";
    case JoinKind::Right:
      return " RIGHT JOIN ";
    case JoinKind::Full:
      return " FULL JOIN ";
    case JoinKind::Cross:
      break;
  }
  return " CROSS JOIN ";
}

bool IsTemporary(const TableSource& source) {
  const auto* named = std::get_if<NamedTable>(&source.node);
  return named != nullptr && named->name.name.starts_with('#');
}

// The joins of a chain that leans to the left, the innermost first.
std::vector<const Join*> ChainOf(const TableSource& source) {
  std::vector<const Join*> chain;
  for (const auto* join = std::get_if<Join>(&source.node); join != nullptr;
       join = std::get_if<Join>(&join->left->node)) {
    chain.push_back(join);
  }
  std::reverse(chain.begin(), chain.end());
  return chain;
}

// The join whose right side is a temporary table that may stand first: the chain's size where there is none.
std::size_t FindLeader(const std::vector<const Join*>& chain) {
  if (chain.empty() || IsTemporary(*chain.front()->left)) return chain.size();
  const bool movable = std::all_of(chain.begin(), chain.end(), [](const Join* join) {
    return join->kind == JoinKind::Inner || join->kind == JoinKind::Left || join->kind == JoinKind::Cross;
  });
  if (!movable) return chain.size();
  const auto found = std::find_if(chain.begin(), chain.end(), [](const Join* join) {
    return join->kind == JoinKind::Inner && IsTemporary(*join->right);
  });
  return static_cast<std::size_t>(found - chain.begin());
}

bool NamesSource(const Expression& expression, std::string_view name) {
  const auto* column = std::get_if<ColumnReference>(&expression.node);
  return column != nullptr && EqualsIgnoreCase(column->qualifier, name);
}

// Whether the condition can't hold where the columns of the source are Null: an equation with one of them must hold.
bool NeedsSource(const Expression& condition, std::string_view name) {
  const auto* binary = std::get_if<Binary>(&condition.node);
  if (binary == nullptr) return false;
  if (binary->operation == BinaryOperator::And)
    return NeedsSource(*binary->left, name) || NeedsSource(*binary->right, name);
  return binary->operation == BinaryOperator::Equal &&
         (NamesSource(*binary->left, name) || NamesSource(*binary->right, name));
}

}  // namespace

TablePtr Emitter::UseObject(const ObjectName& name) {
  TablePtr object = FindObject(catalog_, name);
  command_.uses.push_back({name, object->signature});
  return object;
}

Text Emitter::NewAlias(std::string_view name) {
  Text alias = LowerKey(name);
  for (int number = 2; !aliases_.insert(alias).second; ++number) alias = LowerKey(name) + '_' + std::to_string(number);
  return SqlName(alias);
}

void Emitter::AddSource(Source source, Scope& scope) {
  if (scope.FindSource(source.name) != nullptr) {
    RefuseStatement("The correlation name '" + source.name + "' is specified multiple times in a FROM clause.");
  }
  scope.sources.push_back(std::move(source));
}

void Emitter::AddTarget(const TablePtr& table, std::string_view name, Scope& scope) {
  Source source;
  source.name = name;
  source.sql_alias = NewAlias(name);
  source.table = table;
  for (const ColumnInfo& column : table->columns) {
    source.columns.push_back({column.name, SqlName(column.alias_of.empty() ? column.name : column.alias_of),
                              column.type, column.nullable, IsText(column.type.kind), column.identity});
  }
  AddSource(std::move(source), scope);
}

Text Emitter::EmitFrom(const std::vector<TableSourcePtr>& from, Scope& scope, std::vector<Text>& conditions) {
  if (from.size() == 1) {
    const std::vector<const Join*> chain = ChainOf(*from.front());
    const std::size_t leader = FindLeader(chain);
    if (leader < chain.size()) return EmitLed(chain, leader, scope, conditions);
  }
  Text sql;
  for (const TableSourcePtr& source : from) {
    if (!sql.empty()) sql += " INNER JOIN ";
    const bool join = from.size() > 1 && std::holds_alternative<Join>(source->node);
    sql += join ? '(' + EmitSource(*source, scope) + ')' : EmitSource(*source, scope);
  }
  return sql;
}

Text Emitter::EmitSource(const TableSource& source, Scope& scope) {
  if (const auto* named = std::get_if<NamedTable>(&source.node)) return EmitNamed(*named, scope);
  if (const auto* derived = std::get_if<DerivedTable>(&source.node)) return EmitDerived(*derived, scope);
  return EmitJoin(std::get<Join>(source.node), scope);
}

Text Emitter::EmitNamed(const NamedTable& named, Scope& scope) {
  const TablePtr table = UseObject(named.name);
  const Text& name = named.alias.empty() ? named.name.name : named.alias;
  if (table->view) {
    Source source;
    source.name = name;
    source.sql_alias = NewAlias(name);
    return EmitView(*table->view, scope, std::move(source));
  }
  AddTarget(table, name, scope);
  return table->SqlName() + " AS " + scope.sources.back().sql_alias;
}

namespace {

void AddColumns(const std::vector<Emitter::Output>& outputs, const std::vector<Text>& names, Source& source) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const Text& name = i < names.size() ? names[i] : outputs[i].name;
    if (name.empty()) {
      RefuseStatement("No column name was specified for column " + std::to_string(i + 1) + " of '" + source.name +
                      "'.");
    }
    for (const SourceColumn& earlier : source.columns) {
      if (EqualsIgnoreCase(earlier.name, name)) {
        RefuseStatement("The column '" + name + "' was specified multiple times for '" + source.name + "'.");
      }
    }
    source.columns.push_back(
        {name, 'c' + std::to_string(i + 1), outputs[i].type, outputs[i].nullable, outputs[i].collated, false});
  }
}

}  // namespace

Text Emitter::EmitDerived(const DerivedTable& derived, Scope& scope) {
  Source source;
  source.name = derived.alias;
  source.sql_alias = NewAlias(derived.alias);
  std::vector<Output> outputs;
  const Text sql = EmitSelect(*derived.select, scope.outer, outputs, false, true);
  AddColumns(outputs, {}, source);
  Text text = '(' + sql + ") AS " + source.sql_alias;
  AddSource(std::move(source), scope);
  return text;
}

Text Emitter::EmitView(const ViewDefinition& view, Scope& scope, Source source) {
  if (view_depth_ == kMaxViewDepth) RefuseStatement("Maximum view nesting level exceeded (limit 32).");
  const auto literals = literals_;
  const bool inline_literals = inline_literals_;
  const bool in_view = in_view_;
  literals_ = view.shape.literals;
  inline_literals_ = in_view_ = true;
  ++view_depth_;
  std::vector<Output> outputs;
  const Text sql = EmitSelect(*view.select, nullptr, outputs, false, true);
  --view_depth_;
  literals_ = literals;
  inline_literals_ = inline_literals;
  in_view_ = in_view;
  AddColumns(outputs, view.columns, source);
  Text text = '(' + sql + ") AS " + source.sql_alias;
  AddSource(std::move(source), scope);
  return text;
}

namespace {

void MakeNullable(Scope& scope, std::size_t first, std::size_t last) {
  for (std::size_t i = first; i < last; ++i) {
    for (SourceColumn& column : scope.sources[i].columns) column.nullable = true;
  }
}

}  // namespace

Text Emitter::EmitJoin(const Join& join, Scope& scope) {
  const std::size_t first = scope.sources.size();
  Text sql = EmitSource(*join.left, scope);
  const std::size_t middle = scope.sources.size();
  const Text right = EmitSource(*join.right, scope);
  sql += SqlJoin(join.kind);
  sql += std::holds_alternative<Join>(join.right->node) ? '(' + right + ')' : right;
  if (join.condition) sql += " ON " + EmitPredicate(*join.condition, scope);
  if (join.kind == JoinKind::Right || join.kind == JoinKind::Full) MakeNullable(scope, first, middle);
  if (join.kind == JoinKind::Left || join.kind == JoinKind::Full) MakeNullable(scope, middle, scope.sources.size());
  return sql;
}

// A temporary table that is joined to permanent ones holds what a statement asks about: it leads the join, its
// condition stands among those of the where clause, which keeps the meaning in a chain of inner and left joins. Behind
// it comes the left joined view or derived table that its condition needs, which by that need is an inner join; then
// the rest.
Text Emitter::EmitLed(const std::vector<const Join*>& chain, std::size_t leader, Scope& scope,
                      std::vector<Text>& conditions) {
  const Text base = EmitSource(*chain.front()->left, scope);
  std::vector<Text> sources;
  std::vector<Text> join_conditions;
  std::size_t second = chain.size();
  for (std::size_t i = 0; i < chain.size(); ++i) {
    const Join& join = *chain[i];
    const std::size_t first = scope.sources.size();
    Text source = EmitSource(*join.right, scope);
    if (std::holds_alternative<Join>(join.right->node)) source = '(' + source + ')';
    sources.push_back(std::move(source));
    join_conditions.push_back(join.condition ? EmitPredicate(*join.condition, scope) : Text());
    if (join.kind == JoinKind::Left) MakeNullable(scope, first, scope.sources.size());
    const bool single = scope.sources.size() == first + 1;
    if (i < leader && second == chain.size() && single && !scope.sources[first].table && join.condition &&
        NeedsSource(*chain[leader]->condition, scope.sources[first].name)) {
      second = i;
    }
  }
  Text sql = sources[leader];
  conditions.push_back(join_conditions[leader]);
  if (second < chain.size()) {
    sql += " CROSS JOIN " + sources[second];
    conditions.push_back(join_conditions[second]);
  }
  sql += " CROSS JOIN " + base;
  for (std::size_t i = 0; i < chain.size(); ++i) {
    if (i == leader || i == second) continue;
    sql += Text(SqlJoin(chain[i]->kind)) + sources[i];
    if (!join_conditions[i].empty()) sql += " ON " + join_conditions[i];
  }
  return sql;
}

}  // namespace rebate::tsql
