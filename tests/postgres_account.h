#pragma once

#include "platform/database/connection.h"

namespace rebate {

// Makes the account's tables, in PostgreSQL's dialect, in an empty database; also the view that a save reads, and the
// function of the moment. Where they are not `numbered`, rows bring the numbers of their keys along.
void MakePostgresAccount(Connection& server, bool numbered);

}  // namespace rebate
