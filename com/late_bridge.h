#pragma once

#include "com/bridge.h"
#include "com/late_call.h"

namespace rebate::com {

// The part of a bridge that every client calls: IUnknown, IDispatch, and the word that errors come with what they say.
// `Interface` is IDispatch or derives from it.
template <typename Interface>
class BridgeTo : public Bridge, public Interface, public ISupportErrorInfo {
 public:
  using Bridge::Bridge;

  IDispatch* dispatch() override { return static_cast<Interface*>(this); }

  STDMETHODIMP QueryInterface(REFIID id, void** found) override {
    if (found == nullptr) return E_POINTER;
    *found = Find(id);
    if (*found == nullptr) return E_NOINTERFACE;
    Bridge::AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return Bridge::AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return Bridge::Release(); }

  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return com::GetTypeInfoCount(*this, count); }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override { return com::GetTypeInfo(*this, index, info); }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return com::GetIDsOfNames(object(), names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* told,
                      UINT* wrong_argument) override {
    return com::Invoke(object(), id, kind, parameters, result, told, wrong_argument);
  }

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID id) override {
    return id == __uuidof(IDispatch) || id == __uuidof(Interface) ? S_OK : S_FALSE;
  }

 protected:
  // The interface without a count; null where the object has none of that id.
  virtual void* Find(REFIID id) {
    if (id == __uuidof(IUnknown) || id == __uuidof(IDispatch) || id == __uuidof(Interface))
      return static_cast<Interface*>(this);
    if (id == __uuidof(ISupportErrorInfo)) return static_cast<ISupportErrorInfo*>(this);
    return nullptr;
  }
};

// The bridge of an object whose members answer by name alone.
class LateBridge final : public BridgeTo<IDispatch> {
 public:
  explicit LateBridge(ObjectRef object) : BridgeTo(std::move(object), nullptr) {}
};

}  // namespace rebate::com
