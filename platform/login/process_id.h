#pragma once

#include "platform/values/types.h"

namespace rebate {

// The number of this process.
Long CurrentProcessId();

}  // namespace rebate
