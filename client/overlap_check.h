#pragma once

#include <vector>

#include "client/account_findings.h"
#include "platform/database/connection.h"

namespace rebate {

// The enabled schemes that overlap, by pairs, each with the rows that meet: of two schemes of a type, the later one
// would be refused if it were saved now, the earlier one being there. As a save has it, the later one covers its
// organisations with the goods that share their grid row, the earlier one each of its organisations with each of its
// goods; in types without goods, organisations alone count. A whole class is each of its items, and an organisation is
// known by its id, whatever its class. Where there are very many pairs, some are left out, and a last finding says so.
std::vector<Finding> FindOverlaps(Connection& connection);

}  // namespace rebate
