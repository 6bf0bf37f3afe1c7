#pragma once

#include <optional>

#include "platform/database/tsql/eval/value.h"

namespace rebate::tsql {

// Whether two values of one kind are equal; neither is Null.
bool EqualValues(const Value& left, const Value& right);
// Their order: less than, equal to or greater than 0. Texts go as a Chinese account sorts them, unless `dates`.
int CompareValues(const Value& left, const Value& right, bool dates);

// ---- the logic of three values: nothing is unknown ----
std::optional<bool> And(std::optional<bool> left, std::optional<bool> right);
std::optional<bool> Or(std::optional<bool> left, std::optional<bool> right);

}  // namespace rebate::tsql
