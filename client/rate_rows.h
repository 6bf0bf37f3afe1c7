#pragma once

#include <set>

#include "calls/json_text.h"

namespace rebate {

class Account;

// The stored rates of a grid as rows of a file: of one organisation, or of all (0) that the user may see. Counts the
// ones that are left out since their range is gone.
Json StoredRates(Account& account, Long type, Long organisation, Long user, Long& lost);

// The ids of the type's ranges that belong to forms.
std::set<Text> RangesOfForms(Account& account, Long type);

}  // namespace rebate
