#pragma once

#include "client/save_files.h"

namespace rebate {

// Whether a path means several schemes: a directory, or a file of JSON Lines, which is one by its name (`.jsonl`,
// `.ndjson`) or by objects that stand a line each. `text` is the content of a file.
bool IsManySchemes(const Text& path, const Text& text);

// Stores the schemes and forms of a directory's JSON files, in the order of their names, or of a text's lines, in their
// order, and tells what became of each in a table. One that is refused makes the tool end with status 1; the others are
// stored all the same, or none is where `all_or_nothing`.
void SaveDirectory(const SaveOptions& options, Tool& tool);
void SaveLines(const SaveOptions& options, const Text& text, Tool& tool);

}  // namespace rebate
