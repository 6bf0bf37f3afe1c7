#pragma once

#include <vector>

#include "platform/values/types.h"

namespace rebate {

class Account;

// Removes, as one unit of work, what schemes that are gone left in the account: their ranges, rules and selections, and
// the goods of forms' rules that are gone. A scheme that is still there is left alone. `also` is run with it. Raises
// where that fails.
void RemoveRemains(Account& account, const std::vector<Long>& ids, const std::vector<Text>& also = {});

}  // namespace rebate
