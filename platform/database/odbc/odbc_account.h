#pragma once

#include "platform/database/connection.h"
#include "platform/values/types.h"

namespace rebate {

// Opens an account on a server. `connection_text` goes to the ODBC driver manager, which finds the driver by `Driver=`
// (a registered name or the path of the library) or through `DSN=`; two keys are ours and stay here: `Login Timeout`
// and `Query Timeout`, in whole seconds, 15 and 120 if left out, 0 for no limit.
//
// Raises an error with the driver's own description where there is no driver, no server or no right to log in. A
// connection that the server dropped fails the unit of work it was in, and is opened anew for the next one.
ConnectionRef OpenOdbc(const Text& connection_text);

}  // namespace rebate
