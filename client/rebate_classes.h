#pragma once

#include <optional>
#include <vector>

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/values/types.h"

namespace rebate {

class Account;

// The class asked for, or all that an account offers: 24 suppliers, 32 customers, 40 salesmen.
std::vector<Long> ClassesToShow(const std::optional<Long>& wanted);

// The type rows of a rebate class, null where it has none. Raises the reason where they can't be read.
Ref<Vector> TypesOfClass(Account& account, Long rebate_class);

// The row of a rebate type, null where the account doesn't offer it.
Ref<Dictionary> FindTypeRow(Account& account, Long rebate_type);
// The same; raises 5 where the account doesn't offer the type.
Ref<Dictionary> TypeRow(Account& account, Long rebate_type);

// What the rates of a type are counted in (see RateUnit); empty where the account doesn't offer it.
Text RateUnitOf(Account& account, Long rebate_type);

// Appends the values of `from`, which may be null.
void AddAll(const Ref<Vector>& from, Vector& to);

}  // namespace rebate
