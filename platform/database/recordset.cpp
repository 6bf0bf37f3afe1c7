#include "platform/database/recordset.h"

#include "platform/automation/dispatch.h"

namespace rebate {
namespace {

// A field of a recordset: its value is the one in the row on which the cursor stands.
class Field : public Object {
 public:
  Field(Ref<Recordset> rows, std::size_t index) : rows_(std::move(rows)), index_(index) {}

  Text Name() const { return rows_->FieldName(index_); }
  Variant Value() const { return rows_->FieldValue(index_); }

  const MemberTable& Members() const override {
    using dispatch::Property;
    static const MemberTable members{Property("Name", &Field::Name), Property("Value", &Field::Value),
                                     Property("", &Field::Value)};
    return members;
  }

 private:
  Ref<Recordset> rows_;
  std::size_t index_;
};

class Fields : public Object {
 public:
  explicit Fields(Ref<Recordset> rows) : rows_(std::move(rows)) {}

  Long Count() const { return static_cast<Long>(rows_->FieldCount()); }
  ObjectRef Item(const Variant& name_or_position) const { return New<Field>(rows_, IndexOf(name_or_position)); }

  const MemberTable& Members() const override {
    using dispatch::Property;
    static const MemberTable members{Property("Count", &Fields::Count), Property("Item", &Fields::Item, {"Index"}),
                                     Property("", &Fields::Item, {"Index"})};
    return members;
  }

 private:
  std::size_t IndexOf(const Variant& name_or_position) const {
    if (name_or_position.IsText()) return rows_->FieldIndex(name_or_position.text());
    const Long position = ToLong(name_or_position);
    if (position >= 0 && position < Count()) return static_cast<std::size_t>(position);
    throw Error(
        database_error::kNoSuchField, "Recordset",
        "Item cannot be found in the collection corresponding to the requested ordinal: " + std::to_string(position));
  }

  Ref<Recordset> rows_;
};

ObjectRef FieldsOf(Recordset& rows) {
  return New<Fields>(Ref<Recordset>(&rows));
}

}  // namespace

std::size_t Recordset::FieldIndex(std::string_view name) const {
  const std::size_t count = FieldCount();
  for (std::size_t i = 0; i < count; ++i) {
    if (EqualsIgnoreCase(FieldName(i), name)) return i;
  }
  throw Error(database_error::kNoSuchField, "Recordset",
              "Item cannot be found in the collection corresponding to the requested name: " + Text(name));
}

const MemberTable& Recordset::Members() const {
  using dispatch::Method;
  using dispatch::Property;
  static const MemberTable members{
      Property("EOF", &Recordset::Eof),
      Property("BOF", &Recordset::Bof),
      Property("RecordCount", &Recordset::RecordCount),
      Property("Fields", &FieldsOf),
      Property("", &FieldsOf),
      Method("MoveFirst", &Recordset::MoveFirst, {}),
      Method("MoveNext", &Recordset::MoveNext, {}),
      Property("Filter", &Recordset::Filter),
      dispatch::PropertyPut("Filter", &Recordset::SetFilter, {"Filter"}),
      Method("Close", &Recordset::Close, {}),
  };
  return members;
}

}  // namespace rebate
