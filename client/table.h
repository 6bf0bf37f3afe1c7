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
    bool right = false;  // numbers stand at the right
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // One cell a column; line ends and other control characters in them become blanks.
  void Add(std::vector<Text> cells);
  std::size_t row_count() const { return rows_.size(); }

  // Prints a line of titles, a rule and the rows. Where `width` isn't 0 and the lines would be longer, the widest
  // columns are narrowed and their cells shortened.
  void Print(std::ostream& out, std::size_t width) const;

 private:
  std::vector<std::size_t> Widths(std::size_t width) const;
  void PrintRow(std::ostream& out, const std::vector<Text>& cells, const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<Text>> rows_;
};

}  // namespace rebate
