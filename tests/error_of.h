#pragma once

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"

namespace rebate {

// The error that `act` raises; number 0 where it raises none.
template <typename Act>
Error ErrorOf(Act act) {
  try {
    act();
  } catch (const Error& error) {
    return error;
  }
  return Error(0, "", "");
}

}  // namespace rebate
