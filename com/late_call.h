#pragma once

#include <windows.h>

#include <oleauto.h>

#include <span>

#include "platform/automation/dispatch.h"

namespace rebate::com {

class Bridge;

// IDispatch over the member tables. The id of a member is its position in the table of its class, from 1; the default
// member also answers to DISPID_VALUE, the elements of a container to DISPID_NEWENUM. The name of a member's argument
// is its position, from 0. These never raise.
HRESULT GetTypeInfoCount(const Bridge& bridge, UINT* count) noexcept;
HRESULT GetTypeInfo(const Bridge& bridge, UINT index, ITypeInfo** info) noexcept;
HRESULT GetIDsOfNames(Object& object, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
HRESULT Invoke(Object& object, DISPID id, WORD kind, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* told,
               UINT* wrong_argument) noexcept;

// Calls `member` with a client's arguments in their order; a null pointer is an argument left out. Containers of the
// client's own stand where a Vector or a Dictionary is due. By-ref arguments are written back. Raises what the member
// raises.
Variant CallMember(Object& object, const Member& member, std::span<VARIANT* const> arguments);

}  // namespace rebate::com
