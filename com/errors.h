#pragma once

#include <windows.h>

#include <oleauto.h>

#include "platform/automation/error.h"

namespace rebate::com {

// The system's word for an error: number n from 1 to 65535 is 0x800A0000 + n, a negative one is itself.
HRESULT ResultOf(const Error& error);

// What the system itself says of a failure, with its number where it says nothing.
Text SystemText(HRESULT result);

// Leaves the error for a client that asks for it behind the call that failed (IErrorInfo): source, description, help
// file and context. Gives ResultOf.
HRESULT Leave(const Error& error, REFIID raised_by) noexcept;

// Fills what a late-bound call tells of an error, where its caller wants to know (`told` isn't null).
void Tell(const Error& error, EXCEPINFO* told) noexcept;

// The error that a late-bound call on another's object ended with. `told` is cleared.
Error Taken(HRESULT result, EXCEPINFO& told, std::string_view member);

// Runs `work`, which gives an HRESULT; what it raises is left for the client. Nothing leaves an entry point but this
// way.
template <typename Work>
HRESULT Guarded(REFIID raised_by, Work work) noexcept {
  try {
    return work();
  } catch (...) {
    try {
      return Leave(CurrentError(), raised_by);
    } catch (...) {
      return E_OUTOFMEMORY;
    }
  }
}

}  // namespace rebate::com
