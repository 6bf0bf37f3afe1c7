#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "platform/database/row_set.h"
#include "platform/values/text_order.h"

namespace rebate {
namespace {

constexpr std::uint64_t kNull = 0;

// A date as it grows: the fraction of an automation date goes forward also where the days are negative.
double Serial(const Variant& date) {
  const double days = std::trunc(date.real());
  return days + std::abs(date.real() - days);
}

int CompareCells(const Variant& left, const Variant& right) {
  if (left.IsNull() || right.IsNull()) return right.IsNull() - left.IsNull();
  if (left.IsText()) return CompareInOrder(left.text(), right.text());
  if (left.type() != VariantType::Date) return left.integer() < right.integer() ? -1 : left.integer() > right.integer();
  const double a = Serial(left);
  const double b = Serial(right);
  return a < b ? -1 : a > b;
}

// A number that is less only where the value comes first; nothing where its kind doesn't tell it so simply.
std::optional<std::uint64_t> Weight(const Variant& cell) {
  constexpr std::uint64_t kMiddle = std::uint64_t{1} << 63;
  switch (cell.type()) {
    case VariantType::Null:
      return kNull;
    case VariantType::Text:
      return OrderPrefix(cell.text());
    case VariantType::Date: {
      const auto bits = std::bit_cast<std::uint64_t>(Serial(cell));
      return (bits & kMiddle) != 0 ? ~bits : bits | kMiddle;
    }
    default:
      return static_cast<std::uint64_t>(cell.integer()) + kMiddle;
  }
}

struct WeighedRow {
  std::uint64_t weight;
  std::uint32_t row;
};

}  // namespace

void RowSet::Sort(std::span<const RowOrder> keys) {
  order_.clear();
  if (keys.empty() || row_count() < 2) return;
  std::vector<WeighedRow> rows(row_count());
  bool weighed = true;
  for (std::uint32_t row = 0; row < rows.size(); ++row) {
    const auto weight = weighed ? Weight(Cell(row, keys.front().field)) : std::nullopt;
    weighed = weight.has_value();
    rows[row] = {keys.front().descending ? ~weight.value_or(0) : weight.value_or(0), row};
  }
  if (!weighed) {
    for (WeighedRow& row : rows) row.weight = 0;
  }
  const auto goes_before = [&](const WeighedRow& left, const WeighedRow& right) {
    if (left.weight != right.weight) return left.weight < right.weight;
    for (const RowOrder& key : keys) {
      const int order = CompareCells(Cell(left.row, key.field), Cell(right.row, key.field));
      if (order != 0) return key.descending ? order > 0 : order < 0;
    }
    return left.row < right.row;
  };
  if (std::is_sorted(rows.begin(), rows.end(), goes_before)) return;
  std::sort(rows.begin(), rows.end(), goes_before);
  std::vector<std::uint32_t> order(rows.size());
  std::transform(rows.begin(), rows.end(), order.begin(), [](const WeighedRow& row) { return row.row; });
  order_ = std::move(order);
}

}  // namespace rebate
