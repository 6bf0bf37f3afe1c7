#pragma once

#include "client/sql_batch.h"

namespace rebate {

// Runs what is typed at a terminal until its end or `.quit`: batches, run by a line GO or by a `;` at a line's end, and
// commands, which begin with a point. What is refused is told, and the next line is read. `account` is what the
// greeting calls the account.
void RunSqlSession(Connection& connection, const Text& account, SqlView view, Tool& tool);

}  // namespace rebate
