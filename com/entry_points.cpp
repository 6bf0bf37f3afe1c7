#include <windows.h>

#include "com/class_factory.h"
#include "com/errors.h"
#include "com/host.h"
#include "com/module.h"
#include "com/registration.h"

namespace com = rebate::com;

namespace {

// Does `act` for the machine's registration; false where the rights for that are missing.
template <typename Act>
bool ForMachine(Act act) {
  try {
    act(com::Audience::Machine);
    return true;
  } catch (const rebate::Error& error) {
    if (error.number != E_ACCESSDENIED) throw;
    return false;
  }
}

}  // namespace

STDAPI DllGetClassObject(REFCLSID class_id, REFIID id, void** factory) {
  if (factory == nullptr) return E_POINTER;
  *factory = nullptr;
  return com::Guarded(class_id, [&]() -> HRESULT {
    const com::CreatableClass* made = com::FindCreatableClass(class_id);
    if (made == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
    com::PinModule();
    com::ReachHost();
    return com::MakeClassFactory(*made, id, factory);
  });
}

STDAPI DllCanUnloadNow() {
  return com::IsUnused() ? S_OK : S_FALSE;
}

// For the machine, or for the calling user where the rights for that are missing.
STDAPI DllRegisterServer() {
  return com::Guarded(IID_NULL, [] {
    const std::wstring path = com::ModulePath();
    const auto act = [&](com::Audience audience) { com::Register(audience, path); };
    if (!ForMachine(act)) act(com::Audience::User);
    return S_OK;
  });
}

STDAPI DllUnregisterServer() {
  return com::Guarded(IID_NULL, [] {
    com::Unregister(com::Audience::User);
    return ForMachine(&com::Unregister) ? S_OK : E_ACCESSDENIED;
  });
}
