#pragma once

#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// The condition that keeps a user to the suppliers or customers that the user may see, with the blank before and behind
// that the statements expect: `column` is compared with their ids. Empty where the user sees everybody: user 0, a type
// without data rights, or rights that don't apply. Asks whether rights apply at every call.
Text RightsFilter(std::string_view column, Long rebate_type, Long user_id);

}  // namespace rebate
