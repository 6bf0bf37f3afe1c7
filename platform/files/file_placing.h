#pragma once

#include <system_error>

#include "platform/values/types.h"

// Putting a finished file in its place.
namespace rebate::files {

// Gives a file its name, in the place of the file that has it, if any, as one step; gives the error else.
std::error_code Replace(const Text& from, const Text& to);
// Sees to it that the names in the folder of `path` survive a power failure, where the system can be told to.
void SyncFolderOf(const Text& path);

}  // namespace rebate::files
