#pragma once

#include "scheme/save_request.h"

namespace rebate {

// Works out the ground that a request covers, in temporary tables of the call's connection, and looks for other enabled
// schemes of its type that cover any of it. Where there are some, `answer` gets "OK" False, "Err" and the overlapping
// rows under "Repeat", and the result is true. Raises error 5 for a range item class other than 1, 4 and 8, and what a
// refused statement raises; the temporary tables then stay.
bool FindConflicts(Call& call, const SaveRequest& request, Dictionary& answer);

}  // namespace rebate
