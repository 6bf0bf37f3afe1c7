#pragma once

#include <optional>

#include "calls/json_text.h"
#include "client/findings.h"
#include "client/scheme_lookup.h"

namespace rebate {

// Looks through a save request of right shape, plain as PlainObject gives it, and puts ids in the place of the numbers
// in it: whether the account has the type, the organisations, goods, units and the replaced scheme that it names, and
// whether its ranges, rows and rates go together. Gives the scheme that it replaces, if any. Raises where the account
// can't tell.
std::optional<SchemeHead> CheckScheme(Account& account, Json& request, Findings& findings);

}  // namespace rebate
