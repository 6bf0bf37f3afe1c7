#pragma once

#include <optional>

#include "platform/values/types.h"

namespace rebate {

// Whether a line at this terminal can be edited by the tool; elsewhere the system does it, or nobody.
bool HasLineEditor();

// Reads a line at the terminal, with editing and the history of former lines and runs, which the file `.rebate_history`
// in the user's folder keeps, for the user alone. Nothing at the end of input.
std::optional<Text> EditLine(const Text& prompt);

// Shows a text through $PAGER, or `less` where it isn't set; false where there is none that runs.
bool ShowPages(const Text& text);

}  // namespace rebate
