#pragma once

#include "client/account.h"

namespace rebate {

struct Tool;

// A file to be stored, whether what is odd in it is refused, too, and whether one refusal undoes all of several
// schemes.
struct SaveOptions : AccountOptions {
  Text file;
  bool strict = false;
  bool all_or_nothing = false;
};

// Store the scheme of a request file and the form of a form file, and tell what was done. A file that is refused makes
// the tool end with status 1, the reasons told; what fails otherwise raises.
void SaveRequestFile(const SaveOptions& options, Tool& tool);
void SaveFormFile(const SaveOptions& options, Tool& tool);

}  // namespace rebate
