#pragma once

#include "platform/database/connection.h"
#include "platform/values/types.h"

namespace rebate {

// Opens an account on a server. `connection_text` goes to the ODBC driver manager, which finds the driver by `Driver=`
// (a registered name or the path of the library) or through `DSN=`; these keys are ours and stay here: `Login Timeout`
// and `Query Timeout`, in whole seconds, 15 and 120 if left out, 0 for no limit; `PasswordEnv` and `PasswordFile`,
// which name an environment variable or a file of which the password is taken whenever a connection is made.
//
// Raises an error with the driver's own description where there is no driver, no server or no right to log in. A
// connection that the server dropped fails the unit of work it was in; where nothing of the unit was done yet, it is
// opened anew, once, and the unit goes on. Units are serializable: one that can't stand beside another is undone as a
// whole, and its error says that it may be tried again.
ConnectionRef OpenOdbc(const Text& connection_text);

// The driver manager with its version, such as `ODBC driver manager 03.52.0002.0003`.
Text ManagerVersion();

}  // namespace rebate
