#pragma once

#include <windows.h>

#include <oleauto.h>

#include "platform/automation/variant.h"

namespace rebate::com {

// A VARIANT that is cleared with it.
class OwnVariant : public VARIANT {
 public:
  OwnVariant() { VariantInit(this); }
  OwnVariant(const OwnVariant&) = delete;
  OwnVariant& operator=(const OwnVariant&) = delete;
  ~OwnVariant() { VariantClear(this); }
};

// The value that a client hands over, by reference or not. Integers of other widths are 32-bit ones where they fit,
// decimals elsewhere; objects are this component's own or a client's. Raises 13 for what is no value here.
Variant FromClient(const VARIANT& value);

// The value for a client, which owns it. A decimal of more digits than the system's holds goes as its text; an array is
// one of VARIANTs from 0. Raises std::bad_alloc.
void ToClient(const Variant& value, VARIANT& target);

// Writes the value into the variable that a by-ref argument stands for, whatever its type; what stood there is let go.
// Raises 13 or 6 where the value doesn't convert to the variable's type.
void WriteBack(const Variant& value, VARIANT& by_ref);

}  // namespace rebate::com
