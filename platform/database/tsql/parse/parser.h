#pragma once

#include <string_view>

#include "platform/database/tsql/parse/tree.h"

namespace rebate::tsql {

// Parses a batch whole. Raises -2147217900 with the server's text for what isn't Transact-SQL ("Incorrect syntax near
// 'x'.") and, by its name, for what lies outside the dialect that is served here.
Batch Parse(std::string_view batch);

}  // namespace rebate::tsql
