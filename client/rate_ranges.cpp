#include "client/rate_ranges.h"

#include <optional>

#include "client/account.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {

Ref<Vector> RangesOfType(Account& account, Long rebate_type) {
  auto ranges = ObjectAs<Vector>(account.Call("GetRebateRange", {rebate_type}));
  if (!ranges && account.refusal()) account.ThrowFailure({});
  return ranges ? ranges : New<Vector>();
}

Long RangeAt(Account& account, Long rebate_type, Long position) {
  const Ref<Vector> ranges = RangesOfType(account, rebate_type);
  std::optional<Long> found;
  const Text type = "Type " + std::to_string(rebate_type);
  for (Long i = 1; i <= ranges->Size(); ++i) {
    const Long id = ToLong(ObjectAs<Dictionary>(ranges->Item(i))->Value("FID"));
    if (ToLong(account.Call("GetRebateRangeIndex", {id, rebate_type})) != position) continue;
    if (found) {
      throw Error(error_number::kInvalidCall, "rebate",
                  type + " has several ranges at position " + std::to_string(position) + "; name one as FAmtRangeID");
    }
    found = id;
  }
  if (found) return *found;
  throw Error(error_number::kInvalidCall, "rebate", type + " has no range at position " + std::to_string(position));
}

}  // namespace rebate
