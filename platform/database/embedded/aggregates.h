#pragma once

#include <sqlite3.h>

namespace rebate {

// Teaches a connection the aggregates of the dialect that SQLite's own don't serve: `t_sum_int`, `t_avg_decimal_38_10`
// and so on, one for each type of result; `t_stdev` and its kin; `t_single`, the only row of a subquery.
void RegisterAggregates(sqlite3* database);

}  // namespace rebate
