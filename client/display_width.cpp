#include "client/display_width.h"

#include <locale.h>
#include <clocale>
#include <cwchar>

#include "platform/values/text.h"

namespace rebate {
namespace {

// Makes the calling thread's character rules those of Unicode while it lives, whatever the user's locale is.
class UnicodeRules {
 public:
  UnicodeRules() : former_(uselocale(Unicode())) {}
  ~UnicodeRules() { uselocale(former_); }
  UnicodeRules(const UnicodeRules&) = delete;
  UnicodeRules& operator=(const UnicodeRules&) = delete;

 private:
  static locale_t Unicode() {
    static const locale_t rules = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return rules;
  }

  locale_t former_;
};

struct Character {
  std::size_t bytes;
  std::size_t columns;
};

// The first character of `text`, which is not empty; UnicodeRules are in force.
Character FirstOf(std::string_view text) {
  const char* at = text.data();
  const char32_t character = NextCodePoint(at, at + text.size());
  const int columns = character == 0 ? 1 : wcwidth(static_cast<wchar_t>(character));
  return {static_cast<std::size_t>(at - text.data()), columns < 0 ? 1 : static_cast<std::size_t>(columns)};
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
  const UnicodeRules rules;
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
  const UnicodeRules rules;
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
