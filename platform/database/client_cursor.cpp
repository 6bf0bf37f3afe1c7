#include <optional>

#include "platform/automation/conversion.h"
#include "platform/database/error_numbers.h"
#include "platform/database/row_set.h"

namespace rebate {
namespace {

constexpr Long kInvalidFilter = 3001;
constexpr std::string_view kSource = "Recordset";

// One `Name=Value` test.
struct Condition {
  std::size_t field;
  Variant value;  // a text, or a Double

  bool Shows(const Variant& cell) const {
    if (cell.IsNull()) return false;
    if (value.IsText()) return EqualsIgnoreCase(ToText(cell), value.text());
    return IsTheNumber(cell, value.real());
  }
};

class ClientCursor final : public Recordset {
 public:
  explicit ClientCursor(Ref<RowSet> rows) : rows_(std::move(rows)) {}

  bool Eof() const override { return row_ >= Rows().row_count(); }
  bool Bof() const override { return RecordCount() == 0; }
  Long RecordCount() const override {
    Long shown = 0;
    for (std::size_t row = 0; row < Rows().row_count(); ++row) shown += IsShown(row) ? 1 : 0;
    return shown;
  }
  std::size_t FieldCount() const override { return Rows().names().size(); }
  const Text& FieldName(std::size_t field) const override {
    CheckField(field);
    return Rows().names()[field];
  }
  Variant FieldValue(std::size_t field) const override {
    CheckField(field);
    CheckRow();
    return rows_->Cell(row_, field);
  }
  std::span<const Variant> Row() const override {
    CheckRow();
    return rows_->Row(row_);
  }
  Ref<KeyList> Keys() const override { return Rows().keys(); }

  void MoveFirst() override {
    (void)Rows();
    row_ = 0;
    SkipHidden();
  }
  void MoveNext() override {
    CheckRow();
    ++row_;
    SkipHidden();
  }
  void SetFilter(std::string_view filter) override {
    condition_ = Trim(filter).empty() ? std::nullopt : std::optional(Parse(filter));
    filter_ = filter;
    MoveFirst();
  }
  Text Filter() const override {
    (void)Rows();
    return filter_;
  }
  void Close() override { rows_ = nullptr; }

 private:
  const RowSet& Rows() const {
    if (!rows_)
      throw Error(database_error::kClosed, Text(kSource), "Operation is not allowed when the object is closed.");
    return *rows_;
  }
  void CheckField(std::size_t field) const {
    if (field >= FieldCount()) {
      throw Error(database_error::kNoSuchField, Text(kSource), "Item cannot be found in the collection.");
    }
  }
  void CheckRow() const {
    if (Eof()) {
      throw Error(database_error::kNoCurrentRow, Text(kSource),
                  "Either BOF or EOF is True, or the current record has been deleted.");
    }
  }
  bool IsShown(std::size_t row) const { return !condition_ || condition_->Shows(rows_->Cell(row, condition_->field)); }
  void SkipHidden() {
    while (row_ < rows_->row_count() && !IsShown(row_)) ++row_;
  }
  Condition Parse(std::string_view filter) const {
    const std::size_t equals = filter.find('=');
    if (equals == std::string_view::npos) ThrowInvalidFilter(filter);
    const std::size_t field = FieldIndex(Trim(filter.substr(0, equals)));
    const std::string_view value = Trim(filter.substr(equals + 1));
    if (value.size() >= 2 && value.starts_with('\'') && value.ends_with('\'')) {
      return {field, Variant(Replace(value.substr(1, value.size() - 2), "''", "'"))};
    }
    const std::optional<double> number = ParseNumber(value);
    if (!number) ThrowInvalidFilter(filter);
    return {field, Variant(*number)};
  }
  [[noreturn]] static void ThrowInvalidFilter(std::string_view filter) {
    throw Error(kInvalidFilter, Text(kSource), "Filter is not of the form Name=Value: " + Text(filter));
  }

  Ref<RowSet> rows_;  // null once closed
  std::size_t row_ = 0;
  Text filter_;
  std::optional<Condition> condition_;
};

}  // namespace

void RowSet::AddText(std::string_view text) {
  if (cells_.size() >= width_) {
    const Variant& above = cells_[cells_.size() - width_];
    if (above.IsText() && above.text() == text) {
      cells_.push_back(Variant(above));
      return;
    }
  }
  cells_.emplace_back(text);
}

RecordsetRef OpenRecordset(Ref<RowSet> rows) {
  return New<ClientCursor>(std::move(rows));
}

}  // namespace rebate
