#include <algorithm>

#include "platform/database/tsql/print/printer.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

bool IsTableServed(const TableInfo& table, const ColumnInfo& column) {
  const Text& stored = column.alias_of.empty() ? column.name : column.alias_of;
  return std::any_of(table.keys.begin(), table.keys.end(), [&](const KeyInfo& key) {
    return EqualsIgnoreCase(key.columns.front(), stored) || EqualsIgnoreCase(key.columns.front(), column.name);
  });
}

bool IsCoreServed(const bound::Core& core, std::size_t item) {
  if (core.top || core.grouped) return false;
  const auto* column = std::get_if<bound::Column>(&core.items[item].value->node);
  return column != nullptr && IsServed(*column->source, column->index);
}

}  // namespace

bool IsServed(const bound::Source& source, std::size_t column) {
  if (source.table) return IsTableServed(*source.table, source.table->columns[column]);
  return source.query && std::all_of(source.query->cores.begin(), source.query->cores.end(),
                                     [&](const bound::Core& core) { return IsCoreServed(core, column); });
}

std::set<const bound::Source*> FoundByKey(const bound::Expression& where) {
  if (const auto* both = std::get_if<bound::Logical>(&where.node); both != nullptr && both->conjunction) {
    std::set<const bound::Source*> sources = FoundByKey(*both->left);
    sources.merge(FoundByKey(*both->right));
    return sources;
  }
  const auto* in = std::get_if<bound::InQuery>(&where.node);
  const auto* column = in != nullptr && !in->negated ? std::get_if<bound::Column>(&in->operand->node) : nullptr;
  if (column == nullptr || !column->source->table || in->query->correlated) return {};
  const TableInfo& table = *column->source->table;
  const bool key = std::any_of(table.keys.begin(), table.keys.end(), [&](const KeyInfo& candidate) {
    return candidate.IsUnique() && candidate.columns.size() == 1 &&
           EqualsIgnoreCase(candidate.columns.front(), table.columns[column->index].name);
  });
  if (!key) return {};
  return {column->source};
}

}  // namespace rebate::tsql
