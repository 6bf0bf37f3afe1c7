#include "com/module.h"

#include <atomic>

#include "platform/automation/error.h"

namespace rebate::com {
namespace {

std::atomic<long> uses{0};

HMODULE Handle(DWORD flags) {
  HMODULE module = nullptr;
  GetModuleHandleExW(flags | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&IsUnused),
                     &module);
  return module;
}

}  // namespace

InUse::InUse() {
  ++uses;
}

InUse::~InUse() {
  --uses;
}

void LockModule(bool lock) {
  uses += lock ? 1 : -1;
}

bool IsUnused() {
  return uses == 0;
}

void PinModule() {
  Handle(GET_MODULE_HANDLE_EX_FLAG_PIN);
}

std::wstring ModulePath() {
  const HMODULE module = Handle(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) throw Error(error_number::kInternal, "", "The component's file can't be told");
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

}  // namespace rebate::com
