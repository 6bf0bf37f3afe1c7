#pragma once

#include <vector>

#include "client/account_findings.h"
#include "client/progress.h"
#include "platform/database/connection.h"

namespace rebate {

// The steps in which CheckAccount tells its progress.
std::size_t CheckSteps();

// All that is wrong in an account, kind by kind. It reads inside the connection's unit of work. What is damaged in the
// account's own file is a finding, too, and where it keeps rows from being read, the last one. Raises where a server
// can't be read.
std::vector<Finding> CheckAccount(Connection& connection, Progress& progress);

// Mends all that has one right answer, in the connection's unit of work, on what stands there by now.
void MendAccount(Connection& connection);

}  // namespace rebate
