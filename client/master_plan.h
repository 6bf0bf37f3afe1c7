#pragma once

#include "client/file_problems.h"
#include "client/master_file.h"
#include "client/master_rows.h"

namespace rebate {

// What is to be done to one row of the account, in its table, in t_Item and to its units.
struct MasterChange {
  enum class What { Nothing, Insert, Update };

  Long id = 0;
  std::vector<MasterCell> cells;   // as they shall be
  std::vector<MasterCell> former;  // as they are, where the row is updated
  What row = What::Nothing;
  What item = What::Nothing;
};

// What a file does to an account.
struct MasterPlan {
  std::vector<MasterChange> changes;  // but for rows that stay as they are
  std::size_t inserted = 0;
  std::size_t updated = 0;
  std::size_t unchanged = 0;
};

// Finds what is to be done so that the account holds what the file says: a row whose id or number is there is updated,
// in the columns that the file has, another one is inserted, under the next free id where the file gives none. What
// can't be done goes to `problems`. Raises where the account can't tell.
MasterPlan PlanImport(Connection& connection, const MasterKind& kind, MasterFile file, FileProblems& problems);

}  // namespace rebate
