#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include "client/table.h"

namespace rebate {

// Prints titles with their values, one a line.
void PrintFields(const std::vector<std::pair<std::string_view, Text>>& fields, std::ostream& out);

// Prints a table under a title, but for a table without rows. `width` as in Table::Print.
void PrintSection(std::string_view title, const Table& table, std::ostream& out, std::size_t width);

}  // namespace rebate
