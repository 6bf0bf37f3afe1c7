#include "service/statement_text.h"

namespace rebate {

Text Fill(std::string_view pattern, std::initializer_list<Splice> values) {
  std::size_t size = pattern.size();
  for (const Splice& value : values) size += value.view().size();
  Text text;
  text.reserve(size);
  for (const Splice& value : values) {
    const std::size_t place = pattern.find("{}");
    if (place == std::string_view::npos)
      throw Error(error_number::kInvalidCall, "Statement", "More values than places");
    text.append(pattern.substr(0, place)).append(value.view());
    pattern.remove_prefix(place + 2);
  }
  if (pattern.find("{}") != std::string_view::npos) {
    throw Error(error_number::kInvalidCall, "Statement", "More places than values");
  }
  return text.append(pattern);
}

Text Lines(std::initializer_list<std::string_view> lines) {
  Text text;
  for (const std::string_view line : lines) {
    if (!text.empty()) text += "\r\n";
    text += line;
  }
  return text;
}

}  // namespace rebate
