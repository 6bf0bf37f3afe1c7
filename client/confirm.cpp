#include "client/confirm.h"

#include <istream>
#include <ostream>

#include "client/tool.h"
#include "platform/automation/error.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

bool SaysYes(Tool& tool) {
  tool.out << " [y/N] " << std::flush;
  Text line;
  std::getline(tool.in, line);
  if (line.ends_with('\r')) line.pop_back();
  const std::string_view answer = Trim(line);
  return EqualsIgnoreCase(answer, "y") || EqualsIgnoreCase(answer, "yes") || answer == "是";
}

}  // namespace

void Confirm(const Text& question, Tool& tool) {
  if (!tool.asks) {
    throw Error(error_number::kInvalidCall, "rebate", question + "\nNothing was changed; --yes answers the question");
  }
  tool.out << question;
  if (!SaysYes(tool)) throw Error(error_number::kInvalidCall, "rebate", "Nothing was changed");
}

}  // namespace rebate
