#include "model/account_script.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"

namespace rebate {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f\v";

// Tells, line by line, whether the next one begins inside of what an earlier one has opened.
class OpenMarks {
 public:
  bool Any() const { return closing_ != 0 || comments_ > 0; }

  void Read(std::string_view line) {
    for (std::size_t at = 0; at < line.size(); ++at) {
      const std::string_view rest = line.substr(at);
      if (closing_ != 0) {
        // A doubled mark closes and opens again.
        if (line[at] == closing_) closing_ = 0;
      } else if (rest.starts_with("/*")) {
        ++comments_;
        ++at;
      } else if (comments_ > 0) {
        if (!rest.starts_with("*/")) continue;
        --comments_;
        ++at;
      } else if (rest.starts_with("--")) {
        return;
      } else if (line[at] == '\'' || line[at] == '"') {
        closing_ = line[at];
      } else if (line[at] == '[') {
        closing_ = ']';
      }
    }
  }

 private:
  char closing_ = 0;  // what ends the text or name that is open; 0 where none is
  int comments_ = 0;
};

// How often the batch before a line of GO is run; nothing where the line isn't one.
std::optional<std::size_t> TimesOf(std::string_view line, std::size_t number) {
  line = Trim(line, kBlanks);
  if (line.size() < 2 || !EqualsIgnoreCase(line.substr(0, 2), "go")) return std::nullopt;
  std::string_view behind = line.substr(2);
  if (!behind.empty() && kBlanks.find(behind.front()) == std::string_view::npos && !behind.starts_with("--")) {
    return std::nullopt;
  }
  behind = Trim(behind.substr(0, behind.find("--")), kBlanks);
  if (behind.empty()) return 1;
  const std::optional<std::uint32_t> times = WholeNumber<std::uint32_t>(behind);
  if (!times || *times == 0) {
    throw Error(database_error::kStatement, "Transact-SQL",
                "Line " + std::to_string(number) + ": GO takes the number of times to run the batch, from 1 on, not '" +
                    Text(behind) + "'.");
  }
  return *times;
}

}  // namespace

std::vector<ScriptBatch> Batches(std::string_view script) {
  std::vector<ScriptBatch> batches;
  const auto add = [&](std::string_view batch, std::size_t times) {
    if (!Trim(batch, kBlanks).empty()) batches.push_back({batch, times});
  };
  OpenMarks open;
  std::size_t batch = 0;
  std::size_t number = 0;
  for (std::size_t at = 0; at < script.size();) {
    const std::size_t line_end = std::min(script.find('\n', at), script.size());
    const std::size_t next = std::min(line_end + 1, script.size());
    ++number;
    const std::string_view line = script.substr(at, line_end - at);
    const auto times = open.Any() ? std::nullopt : TimesOf(line, number);
    if (times) {
      add(script.substr(batch, at - batch), *times);
      batch = next;
    } else {
      open.Read(line);
    }
    at = next;
  }
  add(script.substr(batch), 1);
  return batches;
}

std::vector<ScriptBatch> AccountBatches(bool embedded) {
  std::vector<ScriptBatch> batches = Batches(AccountSchema());
  if (!embedded) return batches;
  const std::vector<ScriptBatch> indexes = Batches(EmbeddedIndexes());
  batches.insert(batches.end(), indexes.begin(), indexes.end());
  return batches;
}

}  // namespace rebate
