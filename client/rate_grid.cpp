#include "client/rate_grid.h"

#include <algorithm>

namespace rebate {

void RateGrid::AddRange(Text key, Text heading) {
  keys_.push_back(std::move(key));
  ranges_.push_back({std::move(heading), true});
}

void RateGrid::BeginLine(std::vector<Text> labels) {
  if (!lines_.empty() && lines_.back().labels == labels) return;
  lines_.push_back({std::move(labels), std::vector<Text>(ranges_.size() + 1)});
}

void RateGrid::Put(const Text& range_key, const Text& rate) {
  const auto at = std::find(keys_.begin(), keys_.end(), range_key) - keys_.begin();
  has_lost_ = has_lost_ || at == std::ssize(keys_);
  Text& cell = lines_.back().rates[static_cast<std::size_t>(at)];
  cell += (cell.empty() ? "" : ", ") + rate;
}

Table RateGrid::ToTable() const {
  std::vector<Table::Column> columns = labels_;
  columns.insert(columns.end(), ranges_.begin(), ranges_.end());
  if (has_lost_) columns.push_back({"?", true});
  Table table(columns);
  for (const Line& line : lines_) {
    std::vector<Text> cells = line.labels;
    cells.insert(cells.end(), line.rates.begin(), line.rates.end());
    cells.resize(columns.size());
    table.Add(std::move(cells));
  }
  return table;
}

Text RangeHeading(const Text& lower, const Text& upper) {
  return lower + " – " + upper;
}

}  // namespace rebate
