#pragma once

#include <string_view>

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/connection.h"

namespace rebate {

// A converted row holds one text per column, under the column's name: Null as the empty text, everything else by its
// default text without leading and trailing blanks.

// The text that stands for one value. Raises what has no text.
Variant ConvertedValue(const Variant& value);

// The row that the recordset stands on, which doesn't move. The null reference at the end, and where a value can't be
// read or converted.
Ref<Dictionary> RowToDictionary(const RecordsetRef& recordset);

// All rows from the one that the recordset stands on to the end, where it then stands; an empty Vector at the end
// already. A row that can't be converted stands in the list as a null reference. The null reference where the recordset
// itself fails.
Ref<Vector> RecordsetToVector(const RecordsetRef& recordset);

// Runs the statement and converts its first row; the null reference where there is none. Raises what Execute raises.
Ref<Dictionary> ExecuteToRow(Connection& connection, std::string_view statement);

// Runs the statement and converts all its rows. Raises what Execute raises.
Ref<Vector> ExecuteToRows(Connection& connection, std::string_view statement);

}  // namespace rebate
