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

// What the fields of a result are called, which many results can share.
class FieldNames : public RefCounted {
 public:
  explicit FieldNames(std::vector<Text> names) : names_(std::move(names)), keys_(New<KeyList>(names_)) {}

  const std::vector<Text>& names() const { return names_; }
  const Ref<KeyList>& keys() const { return keys_; }

 private:
  std::vector<Text> names_;
  Ref<KeyList> keys_;
};

// A result read whole: names and values, row by row.
class RowSet : public RefCounted {
 public:
  explicit RowSet(Ref<FieldNames> fields) : fields_(std::move(fields)), width_(fields_->names().size()) {}
  explicit RowSet(std::vector<Text> names) : RowSet(New<FieldNames>(std::move(names))) {}

  const std::vector<Text>& names() const { return fields_->names(); }
  const Ref<KeyList>& keys() const { return fields_->keys(); }
  std::size_t row_count() const { return width_ == 0 ? 0 : cells_.size() / width_; }
  const Variant& Cell(std::size_t row, std::size_t field) const { return Row(row)[field]; }
  std::span<const Variant> Row(std::size_t row) const {
    const std::size_t stored = order_.empty() ? row : order_[row];
    return std::span(cells_).subspan(stored * width_, width_);
  }

  // Values come field by field, row by row.
  void Add(Variant value) { cells_.push_back(std::move(value)); }
  // As Add of a text, sharing the text of the same field in the row before where it is equal.
  void AddText(std::string_view text);

  // Puts the rows, all of which are there, in the order of the fields, the first one first: Nulls, then whole numbers,
  // Booleans and dates as they grow, texts as CompareInOrder says. Rows that are equal in these stay as they came.
  void Sort(std::span<const RowOrder> keys);

 private:
  Ref<FieldNames> fields_;
  std::size_t width_;
  std::vector<Variant> cells_;
  std::vector<std::uint32_t> order_;  // where each row stands among the cells; empty where they are in order
};

// An open recordset on the first of the rows.
RecordsetRef OpenRecordset(Ref<RowSet> rows);

}  // namespace rebate
