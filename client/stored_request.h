#pragma once

#include "calls/json_text.h"
#include "client/scheme_lookup.h"

namespace rebate {

// A stored scheme, loaded whole as LoadSchemeRowData gives it, as the request that stores it again in its own place. An
// organisation that stands in every grid row gets the FRowID 0. Raises where the account can't be read.
Json StoredRequest(Account& account, const SchemeHead& head, const Dictionary& scheme);
// The same for a scheme that is loaded first.
Json LoadRequest(Account& account, const SchemeHead& head);

// An amount of the account as a JSON number with all its digits.
Json AmountJson(const Text& amount);

}  // namespace rebate
