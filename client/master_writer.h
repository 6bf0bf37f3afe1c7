#pragma once

#include "client/master_plan.h"
#include "client/progress.h"

namespace rebate {

// Carries a plan out, many rows a statement; `progress` steps once a change. Raises where a statement is refused.
void WriteMaster(Connection& connection, const MasterKind& kind, const MasterPlan& plan, Progress& progress);

// A statement that changes nothing, but begins a unit of work as one that writes: what is read behind it can't be
// changed by others before the unit ends.
Text WriterStatement(const MasterKind& kind);

}  // namespace rebate
