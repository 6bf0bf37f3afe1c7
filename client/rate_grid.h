#pragma once

#include "client/table.h"

namespace rebate {

// Rates as they are thought of: a line for each entity, a column for each amount range.
class RateGrid {
 public:
  // `labels` are the columns that tell what a line is about.
  explicit RateGrid(std::vector<Table::Column> labels) : labels_(std::move(labels)) {}

  // A range's column: the key by which rates name it, and its heading.
  void AddRange(Text key, Text heading);
  // Makes a line, unless the last one bears the same labels.
  void BeginLine(std::vector<Text> labels);
  // Puts a rate into the last line, under the heading `?` where no range bears the key. Rates of one cell stand with
  // commas between them.
  void Put(const Text& range_key, const Text& rate);

  Table ToTable() const;

 private:
  struct Line {
    std::vector<Text> labels;
    std::vector<Text> rates;  // by range, the lost ones last
  };

  std::vector<Table::Column> labels_;
  std::vector<Text> keys_;
  std::vector<Table::Column> ranges_;
  std::vector<Line> lines_;
  bool has_lost_ = false;
};

// A range as a heading.
Text RangeHeading(const Text& lower, const Text& upper);

}  // namespace rebate
