#pragma once

#include <optional>

#include "calls/json_text.h"
#include "client/findings.h"
#include "client/scheme_lookup.h"

namespace rebate {

// Looks through a form of right shape, plain as PlainObject gives it: whether the account has what it names, and
// whether its type, mode, ranges and rates go together. Puts ids in the place of numbers, and rows of one selection
// beside each other, as the operation wants them. Gives the form that it replaces, if any. Raises where the account
// can't tell.
std::optional<SchemeHead> CheckForm(Account& account, Json& form, Findings& findings);

}  // namespace rebate
