#pragma once

#include <span>
#include <vector>

#include "platform/automation/variant.h"
#include "platform/database/recordset.h"

namespace rebate {

// A result read whole: names and values, row by row.
class RowSet : public RefCounted {
 public:
  explicit RowSet(std::vector<Text> names);

  const std::vector<Text>& names() const { return names_; }
  const Ref<KeyList>& keys() const { return keys_; }
  std::size_t row_count() const { return names_.empty() ? 0 : cells_.size() / names_.size(); }
  const Variant& Cell(std::size_t row, std::size_t field) const { return cells_[row * names_.size() + field]; }

  std::span<const Variant> Row(std::size_t row) const {
    return std::span(cells_).subspan(row * names_.size(), names_.size());
  }

  // Values come field by field, row by row.
  void Add(Variant value) { cells_.push_back(std::move(value)); }
  // As Add of a text, sharing the text of the same field in the row before where it is equal.
  void AddText(std::string_view text);

 private:
  std::vector<Text> names_;
  Ref<KeyList> keys_;
  std::vector<Variant> cells_;
};

// An open recordset on the first of the rows.
RecordsetRef OpenRecordset(Ref<RowSet> rows);

}  // namespace rebate
