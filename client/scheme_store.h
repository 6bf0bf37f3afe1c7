#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "calls/json_text.h"
#include "client/findings.h"
#include "client/scheme_lookup.h"

namespace rebate {

// A save request or a form, looked through.
struct CheckedScheme {
  Json request;                        // plain, with ids in the place of numbers
  std::vector<Text> problems;          // of its shape; with any of them the rest isn't looked at
  Findings findings;                   // about what it says
  std::optional<SchemeHead> replaced;  // the stored scheme whose place it takes
};

// What became of it.
struct StoredScheme {
  Text name;
  bool stored = false;
  std::optional<Long> id;  // where it is known under which one it stands
  bool disabled = false;
  Ref<Dictionary> answer;  // of the operation, which tells why a request was refused; null for a form
};

// Looks through a save request. Raises where the account can't tell.
CheckedScheme CheckRequest(Account& account, Json request);
// Stores one that nothing is wrong with. It is refused where it overlaps with an enabled scheme. Raises where that
// fails otherwise.
StoredScheme StoreRequest(Account& account, const CheckedScheme& scheme);

// The same for a form, which no overlap refuses.
CheckedScheme CheckFormRequest(Account& account, Json form);
StoredScheme StoreForm(Account& account, const CheckedScheme& scheme);

}  // namespace rebate
