#include "client/json_file.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "client/tool.h"
#include "platform/automation/error.h"
#include "platform/files/files.h"

namespace rebate {

Json ReadJsonFile(const Text& path) {
  const std::optional<Text> text = files::ReadWhole(path);
  if (!text) throw Error(error_number::kInvalidCall, "rebate", "Can't read " + path);
  try {
    return ParseJson(*text);
  } catch (const Error& error) {
    throw Error(error.number, error.source, path + ": " + error.description);
  }
}

bool ReportProblems(const Text& path, const std::vector<Text>& problems, Tool& tool) {
  constexpr std::size_t kMostShown = 10;
  const std::size_t shown = std::min(problems.size(), kMostShown);
  for (std::size_t i = 0; i < shown; ++i) tool.err << path << ": " << problems[i] << '\n';
  if (const std::size_t rest = problems.size() - shown; rest > 0) {
    tool.err << path << ": and " << rest << (rest == 1 ? " more problem" : " more problems") << '\n';
  }
  if (!problems.empty()) tool.status = 1;
  return !problems.empty();
}

}  // namespace rebate
