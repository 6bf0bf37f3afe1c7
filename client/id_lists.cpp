#include "client/id_lists.h"

#include "platform/values/ascii.h"

namespace rebate {

std::vector<Text> ListParts(std::string_view list) {
  std::vector<Text> parts;
  if (Trim(list).empty()) return parts;
  for (const Text& part : Split(list, ',')) {
    const std::size_t before = parts.size();
    for (const Text& word : Split(part, ' ')) {
      if (!word.empty()) parts.push_back(word);
    }
    if (parts.size() == before) parts.emplace_back();
  }
  return parts;
}

}  // namespace rebate
