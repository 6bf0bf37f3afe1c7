#pragma once

#include <sqlite3.h>

#include "platform/database/tsql/eval/value.h"
#include "platform/values/calendar.h"

namespace rebate {

// Teaches a connection the collations of the account's texts and numbers, and the functions that printed statements
// call.
void RegisterFunctions(sqlite3* database);

// The instant of the statement that this thread runs, local or universal: one and the same from BeginInstant on.
void BeginInstant();
Moment LocalInstant();
Moment UniversalInstant();
// An instant as a column of the type keeps it.
Text InstantText(const Moment& moment, const tsql::DataType& type);

// A value that SQLite holds, as one of the type. A text lies in SQLite's memory.
tsql::Value ReadValue(sqlite3_value* value, const tsql::DataType& type);
// Ends a call of one of our functions with the value.
void GiveValue(sqlite3_context* context, const tsql::Value& value);

}  // namespace rebate
