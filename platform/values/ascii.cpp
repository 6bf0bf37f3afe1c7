#include "platform/values/ascii.h"

#include <algorithm>

namespace rebate {

Text AsciiLower(std::string_view text) {
  Text lower(text);
  for (char& c : lower) c = AsciiLower(c);
  return lower;
}

Text AsciiUpper(std::string_view text) {
  Text upper(text);
  for (char& c : upper) c = AsciiUpper(c);
  return upper;
}

bool EqualsIgnoreCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (AsciiLower(left[i]) != AsciiLower(right[i])) return false;
  }
  return true;
}

bool ContainsIgnoreCase(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return AsciiLower(a) == AsciiLower(b); }) != text.end() ||
         part.empty();
}

std::string_view Trim(std::string_view text, std::string_view blanks) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::vector<Text> Split(std::string_view text, char separator) {
  std::vector<Text> parts;
  if (text.empty()) return parts;
  std::size_t start = 0;
  for (std::size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator, start)) {
    parts.emplace_back(text.substr(start, at - start));
    start = at + 1;
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

Text Replace(std::string_view text, std::string_view from, std::string_view to) {
  Text result;
  result.reserve(text.size());
  std::size_t start = 0;
  for (std::size_t at = text.find(from); at != std::string_view::npos; at = text.find(from, start)) {
    result.append(text, start, at - start).append(to);
    start = at + from.size();
  }
  return result.append(text, start);
}

}  // namespace rebate
