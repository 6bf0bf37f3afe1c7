#pragma once

#include "platform/values/types.h"

namespace rebate {

// Numbers under which a database client sees a refused statement.
namespace database_error {
inline constexpr Long kStatement = -2147217900;   // syntax, unknown object, conversion
inline constexpr Long kConstraint = -2147217873;  // a key, a Null, a check
inline constexpr Long kConnection = -2147467259;  // lost, refused, or no account
inline constexpr Long kMemory = -2147024882;      // the server, or the account's engine, is out of memory
inline constexpr Long kTimeout = -2147217871;     // gave up waiting
inline constexpr Long kClosed = 3704;             // a recordset without rows to stand on, or closed
inline constexpr Long kNoCurrentRow = 3021;       // read or move past the end
inline constexpr Long kNoSuchField = 3265;        // a field that the result doesn't have
}  // namespace database_error

}  // namespace rebate
