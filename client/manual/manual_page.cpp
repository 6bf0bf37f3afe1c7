#include "client/manual/manual_page.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "platform/values/text.h"

namespace rebate {
namespace {

// A character as roff takes it: typewriter signs as themselves, where it would print typographic ones.
Text Escaped(char32_t c) {
  switch (c) {
    case '\\':
      return "\\(rs";
    case '-':
      return "\\-";
    case '\'':
      return "\\(aq";
    case '`':
      return "\\(ga";
    case '"':
      return "\\(dq";
    case '^':
      return "\\(ha";
    case '~':
      return "\\(ti";
    default:
      break;
  }
  if (c < 0x80) return Text(1, static_cast<char>(c));
  std::array<char, 16> code;
  std::snprintf(code.data(), code.size(), "\\[u%04X]", static_cast<unsigned>(c));
  return code.data();
}

Text Escaped(const Text& text) {
  Text escaped;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) escaped += Escaped(NextCodePoint(at, end));
  return escaped;
}

Text Bold(const Text& text) {
  return "\\fB" + Escaped(text) + "\\fR";
}

// A line of running text; what stands in backticks is bold. It never begins a request.
Text Line(const Text& text) {
  const auto ticks = std::count(text.begin(), text.end(), '`');
  if (ticks % 2 != 0) return "\\&" + Escaped(text) + "\n";
  Text line;
  bool bold = false;
  for (std::size_t at = 0; at <= text.size(); bold = !bold) {
    const std::size_t end = std::min(text.find('`', at), text.size());
    const Text part = text.substr(at, end - at);
    line += bold ? Bold(part) : Escaped(part);
    at = end + 1;
  }
  return (line[0] == '.' ? "\\&" : "") + line + "\n";
}

Text AsItStands(const HelpText::Lines& lines) {
  Text text = ".nf\n";
  for (const Text& line : lines) text += Line(line);
  return text + ".fi\n";
}

// Lines that are indented stay lines of their own.
Text Filled(const HelpText::Lines& lines) {
  Text text;
  HelpText::Lines indented;
  for (const Text& line : lines) {
    if (line.starts_with(" ")) {
      indented.push_back(line);
      continue;
    }
    if (!indented.empty()) text += AsItStands(std::exchange(indented, {}));
    text += Line(line);
  }
  return indented.empty() ? text : text + AsItStands(indented);
}

Text Heading(const Text& title) {
  Text upper;
  for (const char c : title) upper += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return ".SH " + upper + "\n";
}

Text SectionText(const HelpText::Section& section) {
  Text text = Heading(section.title);
  for (const HelpText::Item& item : section.items) text += ".TP\n" + Bold(item.name) + "\n" + Filled(item.text);
  return text;
}

// The footer's lines behind `label`, without it, up to the next label; taken out of `footer`.
HelpText::Lines TakeLabelled(const Text& label, HelpText::Lines& footer) {
  const auto labelled = [&](const Text& line) { return line.starts_with(label); };
  const auto begin = std::find_if(footer.begin(), footer.end(), labelled);
  if (begin == footer.end()) return {};
  const auto end = std::find_if(begin + 1, footer.end(), [](const Text& line) { return !line.starts_with(" "); });
  HelpText::Lines lines(begin, end);
  for (Text& line : lines) line.erase(0, label.size());
  footer.erase(begin, end);
  return lines;
}

Text FooterText(HelpText::Lines footer) {
  const HelpText::Lines status = TakeLabelled("Status: ", footer);
  const HelpText::Lines examples = TakeLabelled("Example: ", footer);
  Text text;
  if (!footer.empty()) text += Heading("Notes") + Filled(footer);
  if (!status.empty()) text += Heading("Exit status") + Filled(status);
  if (!examples.empty()) text += Heading("Examples") + AsItStands(examples);
  return text;
}

Text SeeAlso(const Text& title, const HelpText& help) {
  Text text = Heading("See also");
  const std::size_t parent = title.rfind('-');
  const auto name = [&](const Text& page) { text += "\\%" + Bold(page) + "(1)\n"; };  // on one line
  if (parent != Text::npos) name(title.substr(0, parent));
  for (const Text& verb : help.Verbs()) name(title + "-" + verb);
  return text;
}

}  // namespace

Text ManualPage(const Text& title, const HelpText& help, const Text& version) {
  Text text = ".TH " + Escaped(title) + " 1 \"\" \"" + Escaped(version) + "\" \"Rebate schemes\"\n.nh\n.ad l\n";
  text += Heading("Name") + Escaped(title) + " \\- " + Escaped(help.description[0]) + "\n";
  text += Heading("Synopsis") + Escaped(help.usage) + "\n";
  for (const HelpText::Section& section : help.sections) text += SectionText(section);
  return text + FooterText(help.footer) + SeeAlso(title, help);
}

}  // namespace rebate
