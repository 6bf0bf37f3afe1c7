#pragma once

#include "platform/values/types.h"

namespace rebate {

struct Tool;

// Asks the user. Raises 5 where the answer isn't yes, and, with the question, where nobody can be asked.
void Confirm(const Text& question, Tool& tool);

}  // namespace rebate
