#pragma once

#include <windows.h>

#include <string>

namespace rebate::com {

// Whom a registration is for.
enum class Audience {
  Machine,  // every user; needs administrator rights
  User,     // the calling one
};

// Registers the classes and the type library in the file at `path`. Raises an error whose number is the system's
// result, E_ACCESSDENIED where the rights are missing; what was written before is then taken away again.
void Register(Audience audience, const std::wstring& path);

// Takes away what Register wrote; nothing there is no failure. Raises as Register does.
void Unregister(Audience audience);

}  // namespace rebate::com
