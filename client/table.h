#pragma once

#include <iosfwd>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// A text table whose columns line up, also with Chinese text in them.
class Table {
 public:
  struct Column {
    Text title;
    bool right = false;  // numbers stand at the right, point under point, and are never cut
    int spare = 0;       // where lines are short, columns are left out, those of the highest number first; 0 stays
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // One cell a column; line ends and other control characters in them become blanks.
  void Add(std::vector<Text> cells);
  std::size_t row_count() const { return rows_.size(); }

  // Prints a line of titles, a rule and the rows. Where `width` isn't 0 and the lines would be longer, the widest texts
  // are shortened, as long as they stay readable; then columns are left out, blank ones first, and a line behind
  // the table names those with anything in them; and
  // where what is left is still too wide, each row is printed down the page, a line a column.
  void Print(std::ostream& out, std::size_t width) const;
  // Prints each row down the page, a line a column, whatever the width.
  void PrintTurned(std::ostream& out) const;

 private:
  using Cells = std::vector<Text>;

  std::vector<std::size_t> NaturalWidths() const;
  std::size_t LeastWidth(std::size_t column, std::size_t natural) const;
  Cells Aligned(std::size_t column) const;
  bool IsBlank(std::size_t column) const;
  int SpareOf(std::size_t column) const;
  void PrintColumns(std::ostream& out, const std::vector<std::size_t>& shown, std::vector<std::size_t> widths,
                    std::size_t width) const;

  std::vector<Column> columns_;
  std::vector<Cells> rows_;
};

}  // namespace rebate
