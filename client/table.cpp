#include "client/table.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <ostream>

#include "client/display_width.h"
#include "client/printable.h"

namespace rebate {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kReadable = 16;  // columns that let a text be told from others

// The characters from the point on; nothing for what is no plain number.
std::size_t FractionSize(const Text& cell) {
  const std::size_t point = cell.find('.');
  const bool plain = cell.find_first_not_of("-.0123456789") == Text::npos;
  return plain && point != Text::npos ? cell.size() - point : 0;
}

std::size_t TotalOf(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), widths.empty() ? 0 : kGap.size() * (widths.size() - 1));
}

Text Padding(std::size_t width, const Text& cell) {
  return Text(width - std::min(width, DisplayWidth(cell)), ' ');
}

}  // namespace

void Table::Add(std::vector<Text> cells) {
  for (Text& cell : cells) cell = Printable(cell);
  rows_.push_back(std::move(cells));
}

Table::Cells Table::Aligned(std::size_t column) const {
  Cells cells;
  for (const Cells& row : rows_) cells.push_back(row[column]);
  if (!columns_[column].right) return cells;
  std::size_t longest = 0;
  for (const Text& cell : cells) longest = std::max(longest, FractionSize(cell));
  for (Text& cell : cells) {
    if (!cell.empty() && cell.find_first_not_of("-.0123456789") == Text::npos) {
      cell.append(longest - FractionSize(cell), ' ');
    }
  }
  return cells;
}

std::vector<std::size_t> Table::NaturalWidths() const {
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::size_t widest = DisplayWidth(columns_[i].title);
    for (const Text& cell : Aligned(i)) widest = std::max(widest, DisplayWidth(cell));
    widths.push_back(widest);
  }
  return widths;
}

std::size_t Table::LeastWidth(std::size_t column, std::size_t natural) const {
  if (columns_[column].right) return natural;
  return std::min(natural, std::max(kReadable, DisplayWidth(columns_[column].title)));
}

bool Table::IsBlank(std::size_t column) const {
  return std::all_of(rows_.begin(), rows_.end(), [column](const Cells& row) { return row[column].empty(); });
}

// A column of blanks goes before any other.
int Table::SpareOf(std::size_t column) const {
  return IsBlank(column) ? std::numeric_limits<int>::max() : columns_[column].spare;
}

void Table::PrintColumns(std::ostream& out, const std::vector<std::size_t>& shown, std::vector<std::size_t> widths,
                         std::size_t width) const {
  std::size_t total = TotalOf(widths);
  while (width > 0 && total > width) {
    std::size_t widest = widths.size();
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const bool gives = widths[i] > LeastWidth(shown[i], widths[i]);
      if (gives && (widest == widths.size() || widths[i] > widths[widest])) widest = i;
    }
    if (widest == widths.size()) break;
    --widths[widest];
    --total;
  }
  std::vector<Text> lines(rows_.size() + 2);
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const Column& column = columns_[shown[i]];
    Cells cells = Aligned(shown[i]);
    cells.insert(cells.begin(), {column.title, Text(widths[i], '-')});
    for (std::size_t line = 0; line < lines.size(); ++line) {
      const Text cell = FitToWidth(cells[line], widths[i]);
      const Text padding = Padding(widths[i], cell);
      if (i > 0) lines[line] += kGap;
      lines[line] += column.right ? padding + cell : cell + padding;
    }
  }
  for (Text& line : lines) {
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

void Table::Print(std::ostream& out, std::size_t width) const {
  const std::vector<std::size_t> natural = NaturalWidths();
  std::vector<std::size_t> shown(columns_.size());
  std::iota(shown.begin(), shown.end(), std::size_t{0});
  Text left_out;
  const auto least_total = [&] {
    std::vector<std::size_t> widths;
    for (const std::size_t i : shown) widths.push_back(LeastWidth(i, natural[i]));
    return TotalOf(widths);
  };
  while (width > 0 && least_total() > width) {
    const auto most_spare = std::max_element(shown.begin(), shown.end(),
                                             [&](std::size_t a, std::size_t b) { return SpareOf(a) < SpareOf(b); });
    if (SpareOf(*most_spare) == 0) return PrintTurned(out);
    if (!IsBlank(*most_spare)) left_out += (left_out.empty() ? "" : ", ") + columns_[*most_spare].title;
    shown.erase(most_spare);
  }
  std::vector<std::size_t> widths;
  for (const std::size_t i : shown) widths.push_back(natural[i]);
  PrintColumns(out, shown, std::move(widths), width);
  if (!left_out.empty()) out << "(too narrow for: " << left_out << ")\n";
}

void Table::PrintTurned(std::ostream& out) const {
  std::size_t widest = 0;
  for (const Column& column : columns_) widest = std::max(widest, DisplayWidth(column.title));
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    if (row > 0) out << '\n';
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const Text& cell = rows_[row][i];
      out << columns_[i].title;
      if (!cell.empty()) out << Padding(widest, columns_[i].title) << kGap << cell;
      out << '\n';
    }
  }
}

}  // namespace rebate
