#include "platform/database/tsql/catalog.h"

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"

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
  return (temporary ? "tempdb." : "main.") + tsql::SqlName(name);
}

const ColumnInfo* TableInfo::FindColumn(std::string_view column) const {
  for (const ColumnInfo& candidate : columns) {
    if (EqualsIgnoreCase(candidate.name, column)) return &candidate;
  }
  return nullptr;
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
  Text key(name);
  for (char& c : key) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return key;
}

}  // namespace rebate::tsql
