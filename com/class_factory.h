#pragma once

#include <windows.h>

#include "com/creatable_classes.h"

namespace rebate::com {

// The interface `id` of a factory that makes objects of the class. Gives E_NOINTERFACE where it has none of that id.
HRESULT MakeClassFactory(const CreatableClass& made, REFIID id, void** factory) noexcept;

}  // namespace rebate::com
