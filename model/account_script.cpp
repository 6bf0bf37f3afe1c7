#include "model/account_script.h"

#include <algorithm>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f\v";

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::vector<std::string_view> Batches(std::string_view script) {
  std::vector<std::string_view> batches;
  const auto add = [&](std::string_view batch) {
    if (!WithoutBlanks(batch).empty()) batches.push_back(batch);
  };
  std::size_t batch = 0;
  for (std::size_t line = 0; line < script.size();) {
    const std::size_t line_end = std::min(script.find('\n', line), script.size());
    const std::size_t next = std::min(line_end + 1, script.size());
    if (EqualsIgnoreCase(WithoutBlanks(script.substr(line, line_end - line)), "go")) {
      add(script.substr(batch, line - batch));
      batch = next;
    }
    line = next;
  }
  add(script.substr(batch));
  return batches;
}

}  // namespace rebate
