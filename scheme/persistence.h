#pragma once

#include "scheme/save_request.h"

namespace rebate {

// Writes the scheme under a new id, enabled, and removes the one that it replaces last of all. Raises what a refused
// statement or an unreadable request raises; the abort vote undoes what is then there.
void PersistScheme(Call& call, const SaveRequest& request);

}  // namespace rebate
