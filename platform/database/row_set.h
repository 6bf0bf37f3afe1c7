#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/automation/variant.h"
#include "platform/database/recordset.h"

namespace rebate {

// A field by which rows are sorted.
struct RowOrder {
  std::size_t field;
  bool descending;
};

// A result read whole: names and values, row by row.
class RowSet : public RefCounted {
 public:
  explicit RowSet(std::vector<Text> names);

  const std::vector<Text>& names() const { return names_; }
  const Ref<KeyList>& keys() const { return keys_; }
  std::size_t row_count() const { return names_.empty() ? 0 : cells_.size() / names_.size(); }
  const Variant& Cell(std::size_t row, std::size_t field) const { return Row(row)[field]; }
  std::span<const Variant> Row(std::size_t row) const {
    const std::size_t stored = order_.empty() ? row : order_[row];
    return std::span(cells_).subspan(stored * names_.size(), names_.size());
  }

  // Values come field by field, row by row.
  void Add(Variant value) { cells_.push_back(std::move(value)); }
  // As Add of a text, sharing the text of the same field in the row before where it is equal.
  void AddText(std::string_view text);

  // Puts the rows, all of which are there, in the order of the fields, the first one first: Nulls, then whole numbers,
  // Booleans and dates as they grow, texts as CompareInOrder says. Rows that are equal in these stay as they came.
  void Sort(std::span<const RowOrder> keys);

 private:
  std::vector<Text> names_;
  Ref<KeyList> keys_;
  std::vector<Variant> cells_;
  std::vector<std::uint32_t> order_;  // where each row stands among the cells; empty where they are in order
};

// An open recordset on the first of the rows.
RecordsetRef OpenRecordset(Ref<RowSet> rows);

}  // namespace rebate
