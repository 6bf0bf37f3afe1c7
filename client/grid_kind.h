#pragma once

#include "platform/values/types.h"

namespace rebate {

// What the rate grid of a type is about.
struct GridKind {
  bool by_goods;
  Long entity_class;        // item class of what it holds
  Long organisation_class;  // item class of those whose rates they are
};

// Raises 5 for a type without a rate grid.
GridKind GridKindOf(Long rebate_type);

}  // namespace rebate
