#include "client/sections.h"

#include <algorithm>
#include <ostream>

#include "client/printable.h"

namespace rebate {

void PrintFields(const std::vector<std::pair<std::string_view, Text>>& fields, std::ostream& out) {
  std::size_t widest = 0;
  for (const auto& [title, value] : fields) widest = std::max(widest, title.size());
  for (const auto& [title, value] : fields) {
    out << title << (value.empty() ? Text() : Text(widest + 2 - title.size(), ' ') + Printable(value)) << '\n';
  }
}

void PrintSection(std::string_view title, const Table& table, std::ostream& out, std::size_t width) {
  if (table.row_count() == 0) return;
  out << '\n' << title << '\n';
  table.Print(out, width);
}

}  // namespace rebate
