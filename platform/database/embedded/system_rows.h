#pragma once

#include <variant>
#include <vector>

#include "platform/database/tsql/catalog.h"

namespace rebate {

class AccountCatalog;

using SystemCell = std::variant<std::monostate, std::int64_t, Text>;
using SystemRow = std::vector<SystemCell>;

// One of the tables in which a server tells of itself.
struct SystemTable {
  std::string_view owner;  // empty for those that are known without one
  std::string_view name;
  std::vector<tsql::ColumnInfo> columns;
  std::vector<SystemRow> (*rows)(AccountCatalog& catalog);
};

const std::vector<SystemTable>& SystemTables();

}  // namespace rebate
