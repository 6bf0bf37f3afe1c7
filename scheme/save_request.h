#pragma once

#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "service/statement_list.h"

namespace rebate {

// What a save reads out of its request: the head's values as they go into the statements, and the lists as they came.
struct SaveRequest {
  Text rebate_type;
  Long range_item_class = 0;
  Long scheme_id = 0;  // of the stored scheme that this one replaces; 0 for a new one
  Text name;
  Text note;
  Ref<Vector> ranges;
  Ref<Vector> organisations;
  Ref<Vector> grid_rows;
};

// Row `index` of a list: the null reference where a null stands, error 13 where anything but a row does.
inline Ref<Dictionary> RowAt(const Vector& rows, Long index) {
  return ObjectAs<Dictionary>(rows.Item(index));
}

// Calls `visit(row)` for each row of the list under `key` of a grid row; a null list has no rows, and null rows are
// skipped.
template <typename Visit>
void EachInnerRow(const Dictionary& grid_row, std::string_view key, Visit visit) {
  const Ref<Vector> rows = ObjectAs<Vector>(grid_row.GetValue(key, ObjectRef()));
  if (!rows) return;
  for (Long i = rows->LBound(); i <= rows->UBound(); ++i) {
    const Ref<Dictionary> row = RowAt(*rows, i);
    if (row) visit(*row);
  }
}

// Calls `visit(row)` for each grid row that isn't null.
template <typename Visit>
void EachGridRow(const Vector& grid_rows, Visit visit) {
  for (Long i = grid_rows.LBound(); i <= grid_rows.UBound(); ++i) {
    const Ref<Dictionary> row = RowAt(grid_rows, i);
    if (row) visit(*row);
  }
}

// Whether an organisation stands in every grid row.
bool StandsInEveryGridRow(const Dictionary& organisation);

// Calls `visit(row id)` with the text of each grid row's id that an organisation stands in: its own, or, where it
// stands in every one, the position of each.
template <typename Visit>
void EachRowIdOf(const Dictionary& organisation, const Vector& grid_rows, Visit visit) {
  if (!StandsInEveryGridRow(organisation)) {
    visit(ToText(organisation.Value("FRowID")));
    return;
  }
  for (Long k = grid_rows.LBound(); k <= grid_rows.UBound(); ++k) visit(std::to_string(k));
}

// The text of a row's value, which must be there.
inline Text ValueText(const Dictionary& row, std::string_view key) {
  return ToText(row.Value(key));
}

}  // namespace rebate
