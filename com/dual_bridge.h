#pragma once

#include <algorithm>
#include <array>

#include "com/dual_classes.h"
#include "com/errors.h"
#include "com/late_bridge.h"
#include "com/type_library.h"
#include "com/values.h"

namespace rebate::com {

// An argument of a vtable call as the value that a late-bound call passes; it stays the caller's.
inline VARIANT Passed(VARTYPE type) {
  VARIANT value;
  VariantInit(&value);
  value.vt = type;
  return value;
}
inline VARIANT Pass(BSTR text) {
  VARIANT value = Passed(VT_BSTR);
  value.bstrVal = text;
  return value;
}
inline VARIANT Pass(long number) {
  VARIANT value = Passed(VT_I4);
  value.lVal = number;
  return value;
}
inline VARIANT Pass(VARIANT_BOOL truth) {
  VARIANT value = Passed(VT_BOOL);
  value.boolVal = truth;
  return value;
}
inline VARIANT Pass(IDispatch* object) {
  VARIANT value = Passed(VT_DISPATCH);
  value.pdispVal = object;
  return value;
}
inline VARIANT Pass(const VARIANT& value) {
  return value;
}
inline VARIANT Pass(BSTR* text) {
  VARIANT value = Passed(VT_BYREF | VT_BSTR);
  value.pbstrVal = text;
  return value;
}
inline VARIANT Pass(long* number) {
  VARIANT value = Passed(VT_BYREF | VT_I4);
  value.plVal = number;
  return value;
}
inline VARIANT Pass(VARIANT_BOOL* truth) {
  VARIANT value = Passed(VT_BYREF | VT_BOOL);
  value.pboolVal = truth;
  return value;
}
inline VARIANT Pass(IDispatch** object) {
  VARIANT value = Passed(VT_BYREF | VT_DISPATCH);
  value.ppdispVal = object;
  return value;
}

// The bridge of a public class: its members over the vtable `Interface` go the same way as late-bound ones.
template <typename Interface>
class DualBridge : public BridgeTo<Interface>, public IProvideClassInfo {
 public:
  using BridgeTo<Interface>::BridgeTo;

  STDMETHODIMP QueryInterface(REFIID id, void** found) override {
    return BridgeTo<Interface>::QueryInterface(id, found);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return Bridge::AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return Bridge::Release(); }

  STDMETHODIMP GetClassInfo(ITypeInfo** info) override {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    return Guarded(__uuidof(Interface), [&] { return FindTypeInfo(this->dual()->class_id, info); });
  }

 protected:
  void* Find(REFIID id) override {
    if (id == __uuidof(IProvideClassInfo)) return static_cast<IProvideClassInfo*>(this);
    return BridgeTo<Interface>::Find(id);
  }

  // Calls the member of that name; `result` takes what it gives.
  template <typename Result, typename... Arguments>
  HRESULT Call(const char* name, Result* result, Arguments... arguments) noexcept {
    if (result == nullptr) return E_POINTER;
    *result = {};
    return Guarded(__uuidof(Interface), [&] {
      VARIANT place = Pass(result);
      WriteBack(CallByName(name, arguments...), place);
      return S_OK;
    });
  }
  template <typename... Arguments>
  HRESULT CallWithoutResult(const char* name, Arguments... arguments) noexcept {
    return Guarded(__uuidof(Interface), [&] {
      CallByName(name, arguments...);
      return S_OK;
    });
  }

 private:
  template <typename... Arguments>
  Variant CallByName(const char* name, Arguments... arguments) {
    // The object may lose its last reference to a client during the call.
    const ObjectRef alive(&this->object());
    std::array<VARIANT, sizeof...(Arguments)> passed{Pass(arguments)...};
    std::array<VARIANT*, sizeof...(Arguments)> ordered{};
    std::transform(passed.begin(), passed.end(), ordered.begin(), [](VARIANT& argument) {
      const bool no_place = (argument.vt & VT_BYREF) != 0 && argument.byref == nullptr;
      return no_place ? nullptr : &argument;
    });
    const Member* member = alive->Members().Find(name);
    if (member == nullptr) throw Error(error_number::kNoSuchMember, "", name);
    return CallMember(*alive, *member, ordered);
  }
};

}  // namespace rebate::com
