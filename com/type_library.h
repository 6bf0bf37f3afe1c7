#pragma once

#include <windows.h>

#include <oleauto.h>

namespace rebate::com {

// The type library in the component's own file. Gives the system's result.
HRESULT LoadOwnTypeLibrary(ITypeLib** library);

// What the type library tells of a class or an interface. Gives the system's result.
HRESULT FindTypeInfo(REFGUID id, ITypeInfo** info);

}  // namespace rebate::com
