#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/database/connection.h"

namespace rebate {

// A table of an account.
struct AccountTable {
  const char* name;
  const char* key;                 // an indexed column of integers
  const char* identity = nullptr;  // the column that numbers the rows
  const char* computed = nullptr;  // a column that none can write
};

// The table of an account's heads of schemes, by which an account is known, and the one whose rows come with it.
inline constexpr char kSchemeTable[] = "t_FL_SchemeList";
inline constexpr char kTypeTable[] = "t_FL_SchemeMode";

// All tables of an account, that of the schemes last.
std::span<const AccountTable> AccountTables();

// Whether the database has the tables of an account.
bool HasAccountTables(Connection& connection);
// The columns of a table that can be written, in their order; none where there is no such table.
std::vector<Text> WritableColumns(Connection& connection, const AccountTable& table);
// The tables and views in the database that aren't an account's, by name.
std::vector<Text> OtherTables(Connection& connection);

}  // namespace rebate
