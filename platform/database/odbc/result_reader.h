#pragma once

#include "platform/database/odbc/handle.h"
#include "platform/database/row_set.h"

namespace rebate::odbc {

// The columns of the result that the statement stands on.
SQLSMALLINT ColumnCount(const Statement& statement);

// Reads the result that the statement stands on, whole. Columns come as the kinds they are: bits as Boolean, small and
// tiny integers as Short, integers as Long (as Decimal where they exceed 32 bits), exact numerics with all their digits
// as Decimal, money as Currency where the driver tells it apart, floats as Double and reals as Single, dates as Date,
// and everything else as Text, binary data in hexadecimal digits.
Ref<RowSet> ReadRows(const Statement& statement);

// Runs through the rows without reading them: a statement may fail on a row far behind the first.
void SkipRows(const Statement& statement);

// Raises the statement's messages as an error unless `outcome` is a success.
void Check(const Statement& statement, SQLRETURN outcome);

}  // namespace rebate::odbc
