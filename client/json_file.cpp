#include "client/json_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "client/tool.h"
#include "platform/automation/error.h"

namespace rebate {

Json ReadJsonFile(const Text& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file || std::filesystem::is_directory(path)) {
    throw Error(error_number::kInvalidCall, "rebate", "Can't read " + path);
  }
  const Text text(std::istreambuf_iterator<char>(file), {});
  try {
    return ParseJson(text);
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
