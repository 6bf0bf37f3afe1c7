#pragma once

#include <span>

#include "platform/containers/value_list.h"

namespace rebate {

// An ordered list of values; positions count from 1. An object is held by reference.
class Vector : public Object, public MadeWithRoom<Vector> {
 public:
  static constexpr std::string_view kClassName = "Vector";

  Vector() = default;
  // Of these values.
  static Ref<Vector> Of(std::span<const Variant> values) {
    Ref<Vector> vector(new (RoomForValues{values.size()}) Vector(values.size()));
    for (const Variant& value : values) vector->Add(value);
    return vector;
  }

  Long Size() const { return static_cast<Long>(items_.size()); }
  Long LBound() const { return 1; }
  Long UBound() const { return Size(); }
  void Add(Variant value) { items_.Add(std::move(value)); }
  void Clear() { items_.Clear(); }
  // Raises 9 outside 1 to Size.
  const Variant& Item(Long index) const;

  const MemberTable& Members() const override;

 private:
  explicit Vector(std::size_t places) : items_(Room(), places) {}

  ValueList items_;
};

}  // namespace rebate
