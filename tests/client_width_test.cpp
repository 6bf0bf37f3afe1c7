#ifdef __GLIBC__

#include <gtest/gtest.h>
#include <locale.h>
#include <wchar.h>

#include "client/display_width.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

// The system's own widths, of every character that it knows.
TEST(ClientWidth, IsThatOfTheSystemForEveryCharacter) {
  const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  ASSERT_NE(unicode, nullptr);
  const locale_t former = uselocale(unicode);
  std::size_t known = 0;
  Text others;
  for (char32_t character = 1; character < 0x110000; ++character) {
    const int columns = wcwidth(static_cast<wchar_t>(character));
    if (columns < 0) continue;
    ++known;
    Text text;
    AppendCodePoint(text, character);
    if (DisplayWidth(text) != static_cast<std::size_t>(columns)) others += " " + std::to_string(character);
  }
  uselocale(former);
  freelocale(unicode);
  EXPECT_EQ(others, "");
  EXPECT_GT(known, 140'000u);
}

}  // namespace
}  // namespace rebate

#endif
