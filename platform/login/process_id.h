#pragma once

#include "platform/automation/types.h"

namespace rebate {

// The number of this process.
Long CurrentProcessId();

}  // namespace rebate
