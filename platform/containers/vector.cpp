#include "platform/containers/vector.h"

#include "platform/automation/dispatch.h"

namespace rebate {

const Variant& Vector::Item(Long index) const {
  if (index < 1 || index > Size()) throw Error(error_number::kSubscript, "Vector", "Subscript out of range");
  return items_[static_cast<std::size_t>(index - 1)];
}

const MemberTable& Vector::Members() const {
  static const DeclaredType kValue{DeclaredType::Kind::Value};
  static const DeclaredType kLong{DeclaredType::Kind::Long};
  const auto self = [](Object& object) -> Vector& { return dynamic_cast<Vector&>(object); };
  const auto item = [self](Object& o, std::span<Variant> a) { return self(o).Item(ToLong(a[0])); };
  static const MemberTable members{
      {"Size",
       MemberKind::PropertyGet,
       {},
       kLong,
       [self](Object& o, std::span<Variant>) { return Variant(self(o).Size()); }},
      {"LBound",
       MemberKind::PropertyGet,
       {},
       kLong,
       [self](Object& o, std::span<Variant>) { return Variant(self(o).LBound()); }},
      {"UBound",
       MemberKind::PropertyGet,
       {},
       kLong,
       [self](Object& o, std::span<Variant>) { return Variant(self(o).UBound()); }},
      {"Add",
       MemberKind::Method,
       {{"Value", kValue}},
       {},
       [self](Object& o, std::span<Variant> a) { return self(o).Add(a[0]), Variant(); }},
      {"Clear",
       MemberKind::Method,
       {},
       {},
       [self](Object& o, std::span<Variant>) { return self(o).Clear(), Variant(); }},
      {"Item", MemberKind::PropertyGet, {{"Index", kLong}}, kValue, item},
      {"", MemberKind::PropertyGet, {{"Index", kLong}}, kValue, item},
  };
  return members;
}

}  // namespace rebate
