#include <set>
#include <sstream>
#include <stdexcept>

#include "client/manual/manual_page.h"

namespace rebate {
namespace {

constexpr std::size_t kTextColumn = 30;
const Text kUsage = "Usage: ";
const Text kVerbs = "Subcommands";

// The title where the line begins a section.
Text TitleOf(const Text& line) {
  static const std::set<Text> kTitles = {"Positionals:", "Options:", kVerbs + ":"};
  return kTitles.contains(line) ? line.substr(0, line.size() - 1) : Text();
}

// A line of a section: a name with the first line of its text, a name alone, or a further line.
void AddLine(const Text& line, HelpText::Section& section) {
  const std::size_t indent = line.find_first_not_of(' ');
  if (indent >= kTextColumn) {
    if (section.items.empty()) throw std::runtime_error("A text without a name: " + line);
    section.items.back().text.push_back(line.substr(kTextColumn));
    return;
  }
  // A name as wide as the column, or wider, stands on a line of its own.
  const std::size_t gap = line.find("  ", indent);
  HelpText::Item item{line.substr(indent, gap == Text::npos ? gap : gap - indent), {}};
  if (gap != Text::npos) item.text.push_back(line.substr(line.find_first_not_of(' ', gap)));
  section.items.push_back(std::move(item));
}

}  // namespace

HelpText HelpText::Parse(const Text& printed) {
  HelpText help;
  Section* section = nullptr;
  std::istringstream lines(printed);
  for (Text line; std::getline(lines, line);) {
    const Text title = help.footer.empty() ? TitleOf(line) : Text();
    if (help.usage.empty()) {
      if (line.starts_with(kUsage)) {
        help.usage = line.substr(kUsage.size());
      } else {
        help.description.push_back(line);
      }
    } else if (!title.empty()) {
      section = &help.sections.emplace_back(Section{title, {}});
    } else if (line.empty()) {
      section = nullptr;
    } else if (section != nullptr) {
      AddLine(line, *section);
    } else {
      help.footer.push_back(line);
    }
  }
  if (help.usage.empty() || help.description.empty()) throw std::runtime_error("No help: " + printed);
  return help;
}

std::vector<Text> HelpText::Verbs() const {
  std::vector<Text> names;
  for (const Section& section : sections) {
    if (section.title != kVerbs) continue;
    for (const Item& item : section.items) names.push_back(item.name);
  }
  return names;
}

}  // namespace rebate
