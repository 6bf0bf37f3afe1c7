#pragma once

#include "client/account.h"

namespace rebate {

struct Tool;

struct SchemeExport : AccountOptions {
  Text target;          // a file, a directory or nothing, for standard output
  bool as_new = false;  // whether no scheme names the stored one whose place it takes
};

// Writes all schemes and forms as `rebate save` takes them, one JSON object a line, or a file each where the target is
// a directory or ends with a slash. Disabled ones come first, marked as such: so none is refused for overlapping with
// one that is stored in front of it, where the account holds no other.
void ExportSchemes(const SchemeExport& options, Tool& tool);

}  // namespace rebate
