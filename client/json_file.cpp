#include "client/json_file.h"

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
  for (const Text& problem : problems) tool.err << path << ": " << problem << '\n';
  if (!problems.empty()) tool.status = 1;
  return !problems.empty();
}

}  // namespace rebate
