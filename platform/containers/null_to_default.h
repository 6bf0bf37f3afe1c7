#pragma once

#include "platform/automation/variant.h"

namespace rebate {

// `fallback` where `value` is a database Null, else `value`.
inline Variant NullToDefault(Variant value, Variant fallback) {
  return value.IsNull() ? std::move(fallback) : value;
}

}  // namespace rebate
