#pragma once

#include <vector>

#include "calls/json_text.h"

namespace rebate {

struct Tool;

// The value in a file. Raises, naming the file, where it can't be read or is no JSON.
Json ReadJsonFile(const Text& path);

// Prints what is wrong with the shape of a file's value, a line each, and makes the tool end with status 1; gives
// whether there was anything.
bool ReportProblems(const Text& path, const std::vector<Text>& problems, Tool& tool);

}  // namespace rebate
