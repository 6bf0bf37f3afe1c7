#include "platform/database/tsql/bind/scope.h"

#include <optional>

#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

std::optional<std::size_t> FindColumn(const bound::Source& source, std::string_view name) {
  for (std::size_t i = 0; i < source.columns.size(); ++i) {
    if (EqualsIgnoreCase(source.columns[i].name, name)) return i;
  }
  return std::nullopt;
}

std::optional<Scope::Hit> FindBare(const Scope& scope, const Text& name) {
  std::optional<Scope::Hit> hit;
  for (const bound::Source* source : scope.sources) {
    const auto column = FindColumn(*source, name);
    if (!column) continue;
    if (hit) RefuseStatement("Ambiguous column name '" + name + "'.");
    hit = {source, *column};
  }
  return hit;
}

std::optional<Scope::Hit> FindQualified(const Scope& scope, const ColumnReference& reference) {
  const bound::Source* source = scope.FindSource(reference.qualifier);
  if (source == nullptr) return std::nullopt;
  const auto column = FindColumn(*source, reference.name);
  if (!column) RefuseStatement("Invalid column name '" + reference.name + "'.");
  return Scope::Hit{source, *column};
}

}  // namespace

const bound::Source* Scope::FindSource(std::string_view name) const {
  for (const bound::Source* source : sources) {
    if (EqualsIgnoreCase(source->name, name)) return source;
  }
  return nullptr;
}

Scope::Hit Scope::Resolve(const ColumnReference& reference) {
  for (Scope* scope = this; scope != nullptr; scope = scope->outer) {
    const auto hit = reference.qualifier.empty() ? FindBare(*scope, reference.name) : FindQualified(*scope, reference);
    if (!hit) continue;
    for (Scope* inner = this; inner != scope; inner = inner->outer) inner->correlated = true;
    (scope == this ? own_columns : outer_columns) = true;
    if (scope != this) scope->own_columns = true;
    return *hit;
  }
  if (reference.qualifier.empty()) RefuseStatement("Invalid column name '" + reference.name + "'.");
  RefuseStatement("The multi-part identifier \"" + reference.qualifier + "." + reference.name +
                  "\" could not be bound.");
}

}  // namespace rebate::tsql
