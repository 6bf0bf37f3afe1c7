#include "com/host.h"

#include <windows.h>

#include <oleauto.h>

#include <mutex>
#include <string>

#include "com/errors.h"
#include "com/foreign_object.h"
#include "com/wide_text.h"
#include "platform/automation/class_objects.h"
#include "platform/login/process_cache.h"
#include "platform/login_standins/login_standins.h"

namespace rebate::com {
namespace {

ObjectRef CreateSystemObject(std::string_view program_id) {
  CLSID id{};
  const HRESULT known = CLSIDFromProgID(Wide(program_id).c_str(), &id);
  if (known == CO_E_CLASSSTRING) return CreateLoginStandIn(program_id);
  ComRef<IDispatch> object;
  const HRESULT result = FAILED(known) ? known
                                       : CoCreateInstance(id, nullptr, CLSCTX_SERVER, __uuidof(IDispatch),
                                                          reinterpret_cast<void**>(object.Receive()));
  if (FAILED(result)) {
    throw Error(error_number::kCannotCreate, "",
                "ActiveX component can't create object: " + Text(program_id) + ": " + SystemText(result));
  }
  return New<ForeignObject>(std::move(object));
}

// Its owner puts the cache's address under the desktop window, by the number of the process.
ObjectRef FindCacheOfHost() {
  const std::string property = std::to_string(GetCurrentProcessId());
  auto* cache = static_cast<IDispatch*>(GetPropA(GetDesktopWindow(), property.c_str()));
  return cache == nullptr ? nullptr : ObjectRef(ForeignObject::Borrow(cache));
}

}  // namespace

void ReachHost() {
  static std::once_flag done;
  std::call_once(done, [] {
    SetSystemClasses(&CreateSystemObject);
    SetProcessCacheFinder(&FindCacheOfHost);
  });
}

}  // namespace rebate::com
