#pragma once

#include <vector>

#include "platform/values/types.h"

namespace CLI {
class App;
}

namespace rebate {

struct Tool;

// The verb by which shells ask, `rebate complete WORD...`; it stands in no list of verbs.
inline constexpr const char* kCompletionVerb = "complete";

// A line that a shell replaces by the names of files.
inline constexpr const char* kFilesLine = ":files";

// Prints what may stand in the place of the last of `words`, the words behind the tool's name as far as they are typed,
// one candidate a line with what it means behind a tab. Rebate types and the ids of schemes come from the account that
// the words or REBATE_DSN name, which is left as it is. Prints nothing where nothing fits or the account can't tell.
void PrintCompletions(CLI::App& app, std::vector<Text> words, Tool& tool);

}  // namespace rebate
