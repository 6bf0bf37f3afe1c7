#pragma once

#include "platform/automation/types.h"

namespace rebate {

// Today's date on this machine, as `yyyy-mm-dd`.
Text LocalDate();

}  // namespace rebate
