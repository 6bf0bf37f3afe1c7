#include "platform/database/tsql/scope.h"

#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

const SourceColumn* FindColumn(const Source& source, std::string_view name) {
  for (const SourceColumn& column : source.columns) {
    if (EqualsIgnoreCase(column.name, name)) return &column;
  }
  return nullptr;
}

std::optional<Scope::Hit> FindBare(const Scope& scope, const Text& name) {
  std::optional<Scope::Hit> hit;
  for (const Source& source : scope.sources) {
    const SourceColumn* column = FindColumn(source, name);
    if (column == nullptr) continue;
    if (hit) Refuse("Ambiguous column name '" + name + "'.");
    hit = {&scope, &source, column};
  }
  return hit;
}

}  // namespace

const Source* Scope::FindSource(std::string_view name) const {
  for (const Source& source : sources) {
    if (EqualsIgnoreCase(source.name, name)) return &source;
  }
  return nullptr;
}

Scope::Hit Scope::Resolve(const ColumnReference& reference) const {
  for (const Scope* scope = this; scope != nullptr; scope = scope->outer) {
    if (reference.qualifier.empty()) {
      if (const auto hit = FindBare(*scope, reference.name)) return *hit;
    } else if (const Source* source = scope->FindSource(reference.qualifier)) {
      const SourceColumn* column = FindColumn(*source, reference.name);
      if (column == nullptr) Refuse("Invalid column name '" + reference.name + "'.");
      return {scope, source, column};
    }
  }
  if (reference.qualifier.empty()) Refuse("Invalid column name '" + reference.name + "'.");
  Refuse("The multi-part identifier \"" + reference.qualifier + "." + reference.name + "\" could not be bound.");
}

Text NarrowedColumn(const Scope& scope, const Text& sql) {
  auto found = std::find(scope.wanted.begin(), scope.wanted.end(), sql);
  if (found == scope.wanted.end()) found = scope.wanted.insert(found, sql);
  return Text(kNarrowedAlias) + ".c" + std::to_string(found - scope.wanted.begin() + 1);
}

}  // namespace rebate::tsql
