#pragma once

#include <windows.h>

#include <oleauto.h>

#include "com/com_ref.h"
#include "platform/automation/object.h"

namespace rebate::com {

// Whether a client may walk over the object: a Vector, a Dictionary, and any other that counts its items from 0.
bool HasElements(const Object& object);

// A walk over the values of a Vector, the keys of a Dictionary, the items of another: as they stand now.
ComRef<IUnknown> ElementsOf(Object& object);

}  // namespace rebate::com
