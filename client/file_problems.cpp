#include "client/file_problems.h"

#include <algorithm>
#include <ostream>

#include "client/tool.h"

namespace rebate {

void FileProblems::Add(std::size_t line, Text problem) {
  problems_.push_back({line, std::move(problem)});
}

void FileProblems::Print(const Text& path, Tool& tool) const {
  constexpr std::size_t kShown = 100;
  std::vector<Problem> sorted = problems_;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Problem& a, const Problem& b) { return a.line < b.line; });
  const std::size_t shown = std::min(sorted.size(), kShown);
  for (std::size_t i = 0; i < shown; ++i) tool.err << path << ": " << sorted[i].text << '\n';
  if (shown < sorted.size()) tool.err << path << ": and " << sorted.size() - shown << " more problems\n";
}

}  // namespace rebate
