#include "platform/database/tsql/catalog.h"

#include <algorithm>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {

Text SqlName(std::string_view name) {
  Text quoted = "\"";
  for (const char c : name) {
    quoted += c;
    if (c == '"') quoted += c;
  }
  return quoted += '"';
}

Text TableInfo::SqlName() const {
  if (!system_source.empty()) return system_source;
  return SchemaName() + '.' + tsql::SqlName(name);
}

const ColumnInfo* TableInfo::FindColumn(std::string_view column) const {
  for (const ColumnInfo& candidate : columns) {
    if (EqualsIgnoreCase(candidate.name, column)) return &candidate;
  }
  return nullptr;
}

const ColumnInfo* TableInfo::Identity() const {
  const auto found = std::find_if(columns.begin(), columns.end(), [](const ColumnInfo& c) { return c.identity; });
  return found != columns.end() ? &*found : nullptr;
}

TablePtr FindObject(Catalog& catalog, const ObjectName& name) {
  TablePtr table = catalog.Find(name);
  if (!table) throw Error(database_error::kStatement, "", "Invalid object name '" + WrittenName(name) + "'.");
  return table;
}

Text WrittenName(const ObjectName& name) {
  Text written;
  if (!name.database.empty()) written += name.database + '.';
  if (!name.database.empty() || !name.owner.empty()) written += name.owner + '.';
  return written + name.name;
}

Text LowerKey(std::string_view name) {
  return AsciiLower(name);
}

}  // namespace rebate::tsql
