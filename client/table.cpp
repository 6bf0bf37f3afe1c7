#include "client/table.h"

#include <algorithm>
#include <numeric>
#include <ostream>

#include "client/display_width.h"

namespace rebate {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kNarrowest = 6;

}  // namespace

void Table::Add(std::vector<Text> cells) {
  for (Text& cell : cells) {
    std::replace_if(
        cell.begin(), cell.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  }
  rows_.push_back(std::move(cells));
}

std::vector<std::size_t> Table::Widths(std::size_t width) const {
  std::vector<std::size_t> widths;
  for (const Column& column : columns_) widths.push_back(DisplayWidth(column.title));
  for (const std::vector<Text>& row : rows_) {
    for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }
  if (width == 0 || widths.empty()) return widths;
  std::size_t total = std::accumulate(widths.begin(), widths.end(), kGap.size() * (widths.size() - 1));
  while (total > width) {
    const auto widest = std::max_element(widths.begin(), widths.end());
    if (*widest <= kNarrowest) break;
    --*widest;
    --total;
  }
  return widths;
}

void Table::PrintRow(std::ostream& out, const std::vector<Text>& cells, const std::vector<std::size_t>& widths) const {
  Text line;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const Text cell = FitToWidth(cells[i], widths[i]);
    const Text padding(widths[i] - std::min(widths[i], DisplayWidth(cell)), ' ');
    if (i > 0) line += kGap;
    line += columns_[i].right ? padding + cell : cell + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out << line << '\n';
}

void Table::Print(std::ostream& out, std::size_t width) const {
  const std::vector<std::size_t> widths = Widths(width);
  std::vector<Text> titles;
  std::vector<Text> rules;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    titles.push_back(columns_[i].title);
    rules.emplace_back(widths[i], '-');
  }
  PrintRow(out, titles, widths);
  PrintRow(out, rules, widths);
  for (const std::vector<Text>& row : rows_) PrintRow(out, row, widths);
}

}  // namespace rebate
