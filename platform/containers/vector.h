#pragma once

#include <vector>

#include "platform/automation/variant.h"

namespace rebate {

// An ordered list of values; positions count from 1. An object is held by reference.
class Vector : public Object {
 public:
  static constexpr std::string_view kClassName = "Vector";

  Long Size() const { return static_cast<Long>(items_.size()); }
  Long LBound() const { return 1; }
  Long UBound() const { return Size(); }
  void Add(Variant value) { items_.push_back(std::move(value)); }
  void Clear() { items_.clear(); }
  // Raises 9 outside 1 to Size.
  const Variant& Item(Long index) const;

  const MemberTable& Members() const override;

 private:
  std::vector<Variant> items_;
};

}  // namespace rebate
