#include "client/display_width.h"

#include <algorithm>
#include <iterator>

#include "client/character_widths.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

template <std::size_t kCount>
bool Holds(const CharacterRange (&ranges)[kCount], char32_t character) {
  const CharacterRange* const found =
      std::partition_point(std::begin(ranges), std::end(ranges),
                           [character](const CharacterRange& range) { return range.last < character; });
  return found != std::end(ranges) && found->first <= character;
}

std::size_t ColumnsOf(char32_t character) {
  if (character < kNoWidth[0].first) return 1;
  return Holds(kNoWidth, character) ? 0 : Holds(kTwoColumns, character) ? 2 : 1;
}

struct Character {
  std::size_t bytes;
  std::size_t columns;
};

// The first character of `text`, which is not empty.
Character FirstOf(std::string_view text) {
  const char* at = text.data();
  const std::size_t columns = ColumnsOf(NextCodePoint(at, at + text.size()));
  return {static_cast<std::size_t>(at - text.data()), columns};
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Character first = FirstOf(text);
    width += first.columns;
    text.remove_prefix(first.bytes);
  }
  return width;
}

Text FitToWidth(std::string_view text, std::size_t width) {
  if (DisplayWidth(text) <= width) return Text(text);
  if (width == 0) return {};
  std::size_t bytes = 0;
  for (std::size_t used = 0; bytes < text.size();) {
    const Character next = FirstOf(text.substr(bytes));
    used += next.columns;
    if (used > width - 1) break;
    bytes += next.bytes;
  }
  return Text(text.substr(0, bytes)) + "…";
}

}  // namespace rebate
