#include "client/findings.h"

#include <ostream>

#include "client/tool.h"

namespace rebate {

bool IsRefused(const Text& path, const Findings& findings, bool strict, Tool& tool) {
  const bool refused = !findings.refusals().empty() || (strict && !findings.oddities().empty());
  for (const Text& refusal : findings.refusals()) tool.err << path << ": " << refusal << '\n';
  for (const Text& oddity : findings.oddities()) {
    tool.err << path << ": " << (strict ? "" : "note: ") << oddity << '\n';
  }
  if (refused) {
    tool.err << "Nothing was stored.\n";
    tool.status = 1;
  }
  return refused;
}

Text PlaceOf(const Text& list, std::size_t index) {
  return list + "[" + std::to_string(index + 1) + "]";
}

}  // namespace rebate
