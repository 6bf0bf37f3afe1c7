#include "platform/containers/vector.h"

#include "platform/automation/dispatch.h"

namespace rebate {

const Variant& Vector::Item(Long index) const {
  if (index < 1 || index > Size()) throw Error(error_number::kSubscript, "Vector", "Subscript out of range");
  return items_[static_cast<std::size_t>(index - 1)];
}

const MemberTable& Vector::Members() const {
  using dispatch::Method;
  using dispatch::Property;
  static const MemberTable members{
      Property("Size", &Vector::Size),        Property("LBound", &Vector::LBound),
      Property("UBound", &Vector::UBound),    Method("Add", &Vector::Add, {"Value"}),
      Method("Clear", &Vector::Clear, {}),    Property("Item", &Vector::Item, {"Index"}),
      Property("", &Vector::Item, {"Index"}),
  };
  return members;
}

}  // namespace rebate
