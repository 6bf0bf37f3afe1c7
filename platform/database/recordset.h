#pragma once

#include <span>
#include <string_view>

#include "platform/automation/variant.h"
#include "platform/containers/key_list.h"
#include "platform/database/error_numbers.h"

namespace rebate {

// The rows that a statement gave, with a cursor on one of them. It is read on the client's side: it outlives the
// connection and the call that made it.
class Recordset : public Object {
 public:
  static constexpr std::string_view kClassName = "Recordset";

  // Whether the cursor is behind the last row (that the filter shows). Raises 3704 on a closed recordset, as every
  // member but Close does.
  virtual bool Eof() const = 0;
  // Whether the cursor is in front of the first row: where there is none (that the filter shows).
  virtual bool Bof() const = 0;
  // The number of rows (that the filter shows).
  virtual Long RecordCount() const = 0;
  virtual std::size_t FieldCount() const = 0;
  virtual const Text& FieldName(std::size_t field) const = 0;
  // The value in the current row. Raises 3021 at the end.
  virtual Variant FieldValue(std::size_t field) const = 0;
  // The values of the current row, field by field, as long as the recordset is open. Raises 3021 at the end.
  virtual std::span<const Variant> Row() const = 0;
  // The names as keys of a row: where two fields bear one name, they share its key.
  virtual Ref<KeyList> Keys() const = 0;

  virtual void MoveFirst() = 0;
  virtual void MoveNext() = 0;  // raises 3021 at the end
  // Shows only the rows that match `Name=Value` (a number or a 'quoted text') and moves to the first of them; the empty
  // text shows all rows again. Raises 3001 for any other form and 3265 for an unknown name.
  virtual void SetFilter(std::string_view filter) = 0;
  virtual Text Filter() const = 0;
  virtual void Close() = 0;

  // The field's value in the current row, by name without regard to case. Raises 3265 for an unknown name.
  Variant FieldValue(std::string_view name) const { return FieldValue(FieldIndex(name)); }
  std::size_t FieldIndex(std::string_view name) const;

  // EOF, BOF, RecordCount, Fields (the default member), MoveFirst, MoveNext, Filter (read and written) and Close.
  // Fields has Count and Item (the default member), by name or by position from 0; a field Name and Value (the default
  // member), that of the row on which the cursor stands.
  const MemberTable& Members() const override;
};

using RecordsetRef = Ref<Recordset>;

}  // namespace rebate
