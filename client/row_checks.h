#pragma once

#include <span>

#include "platform/values/types.h"

namespace rebate {

// A check of each row of a table by itself.
struct RowCheck {
  const char* name;  // of the kind of finding
  const char* table;
  const char* key;        // the columns that tell a row, with commas between them
  const char* what;       // what is wrong with the rows of one scheme; `{}` stands for the scheme's id
  const char* condition;  // that a row `t` is wrong; see ConditionOf
  const char* mend;       // what stands in front of `from TABLE t where CONDITION` to mend it; null where nothing does
};

// The checks in the order in which their findings are told. No row that can be mended is found by two of them.
std::span<const RowCheck> RowChecks();

// The condition that a row `t` of the check's table is wrong, as Transact-SQL.
Text ConditionOf(const RowCheck& check);

}  // namespace rebate
