#pragma once

#include "calls/json_text.h"
#include "client/findings.h"

namespace rebate {

class Account;

// Which rates of a grid a file replaces.
struct RateTarget {
  Long type;
  Long organisation;  // 0 for those of all organisations
  bool rest;          // the rows are for every organisation that isn't selected
};

// Looks through rates, rows of right shape, plain as PlainObject gives them: whether the account has what they name,
// whether there is one rate an entity and range, and whether nothing goes that isn't meant. Completes them to the rows
// that the operations store: each of this type, of no scheme, with the id and the position of its range. Raises for a
// type without a grid, and where the account can't tell.
void CheckRates(Account& account, const RateTarget& target, Json& rows, Findings& findings);

}  // namespace rebate
