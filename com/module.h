#pragma once

#include <windows.h>

#include <string>

namespace rebate::com {

// What keeps the component's code in memory: its objects that clients hold, and their locks.
class InUse {
 public:
  InUse();
  ~InUse();
  InUse(const InUse&) = delete;
  InUse& operator=(const InUse&) = delete;
};

// A client's lock, or its end.
void LockModule(bool lock);

// Whether nothing does.
bool IsUnused();

// Keeps the component's code in memory until the process ends. A thread that has used it runs its code once more at its
// own end, which no count of objects tells.
void PinModule();

// The file that the component's code was loaded from. Raises 51 where the system doesn't tell.
std::wstring ModulePath();

}  // namespace rebate::com
