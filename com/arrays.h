#pragma once

#include <windows.h>

#include <oleauto.h>

#include <vector>

#include "platform/automation/variant.h"

namespace rebate::com {

// The elements of a one-dimensional array of any type, from its lower bound on. Raises 13 for an array of more
// dimensions, and where an element is no value.
Variant FromArray(SAFEARRAY* array);

// A new array of VARIANTs with indices from 0, which the caller owns. Raises std::bad_alloc.
SAFEARRAY* ToArray(const std::vector<Variant>& elements);

}  // namespace rebate::com
