#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/values/ascii.h"
#include "platform/values/folding.h"
#include "platform/values/text.h"
#include "platform/values/text_order.h"

namespace rebate {
namespace {

TEST(Texts, CountByBytesUnitsAndCharacters) {
  const struct {
    Text text;
    std::size_t bytes, units, characters;
  } cases[] = {
      {"", 0, 0, 0}, {"abc", 3, 3, 3}, {"促销a", 5, 3, 3}, {"é", 2, 1, 1}, {"😀x", 3, 3, 2}, {"\x80\xE4\xBF", 3, 3, 3},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CountUnits(c.text, false), c.bytes) << c.text;
    EXPECT_EQ(CountUnits(c.text, true), c.units) << c.text;
    EXPECT_EQ(CountCharacters(c.text), c.characters) << c.text;
  }
  EXPECT_EQ(FirstUnits("促销ab", 3, false), "促");
  EXPECT_EQ(FirstUnits("a😀b", 2, true), "a");
  EXPECT_EQ(FirstUnits("a😀b", 3, true), "a😀");
  EXPECT_EQ(FirstCharacters("促销ab", 3), "促销a");
  EXPECT_EQ(FirstBytes("促销ab", 5), "促");
  EXPECT_EQ(FirstBytes("促销ab", 7), "促销a");
  EXPECT_EQ(FirstBytes("促销", 6), "促销");
}

// Bytes of every kind, torn characters among them.
Text RandomBytes(std::mt19937& engine) {
  static const Text pieces[] = {"a",    "B",    " ",        "é",        "促",   "😀",        "Ａ",          "　",
                                "\x80", "\xE4", "\xE4\xBF", "\xF0\x9F", "\xFF", "\xC0\x80", "\xED\xA0\x80"};
  Text text;
  for (auto count = engine() % 6; count > 0; --count) text += pieces[engine() % std::size(pieces)];
  return text;
}

TEST(Texts, WalksLoseNoByte) {
  std::mt19937 engine(7);
  for (int i = 0; i < 5000; ++i) {
    const Text text = RandomBytes(engine);
    Text copy;
    const char* at = text.data();
    while (at < text.data() + text.size()) AppendCodePoint(copy, NextCodePoint(at, text.data() + text.size()));
    EXPECT_EQ(copy, text);
    EXPECT_EQ(FromWide(ToWide(FromWide(ToWide(text)))), FromWide(ToWide(text)));
  }
}

TEST(Texts, FoldCaseAndWidth) {
  const std::pair<const char*, const char*> equal[] = {
      {"abc", "ABC  "}, {"Ａｂ１！", "aB1!"}, {"é", "É"},  {"Ж", "ж"},  {"Σ", "ς"}, {"a　b", "A b"},
      {"x　", "X"},     {"ｶﾅ", "カナ"},       {"￥", "¥"}, {"ﬀ", "ﬀ "}, {"Ÿ", "ÿ"}, {"", "　 "},
  };
  for (const auto& [left, right] : equal) {
    EXPECT_EQ(CompareText(left, right), 0) << left;
    EXPECT_EQ(CompareInOrder(left, right), 0) << left;
    EXPECT_EQ(Folded(ComparedPart(left)), Folded(ComparedPart(right))) << left;
  }
  for (const auto& [left, right] : {std::pair("a", "b"), {"a", "a!"}, {" a", "a"}, {"z", "促"}, {"é", "e"}}) {
    EXPECT_NE(CompareText(left, right), 0) << left;
  }
  EXPECT_EQ(UpperCase("aéжя促ａ"), "AÉЖЯ促Ａ");
  EXPECT_EQ(LowerCase("AÉЖЯ促Ａ"), "aéжя促ａ");
  EXPECT_TRUE(EqualsIgnoreCase("SELECT", "select"));
  EXPECT_FALSE(EqualsIgnoreCase("É", "é"));
  EXPECT_TRUE(ContainsIgnoreCase("My PassWord", "password"));
  EXPECT_TRUE(ContainsIgnoreCase("x", ""));
}

// An order that indexes can rest on: of any three texts, whatever their bytes.
template <typename Compare>
void CheckOrder(Compare compare) {
  std::mt19937 engine(11);
  const auto sign = [](int order) { return (order > 0) - (order < 0); };
  for (int i = 0; i < 20'000; ++i) {
    const Text a = RandomBytes(engine);
    const Text b = RandomBytes(engine);
    const Text c = RandomBytes(engine);
    ASSERT_EQ(sign(compare(a, b)), -sign(compare(b, a))) << a << '|' << b;
    ASSERT_EQ(compare(a, b) == 0, CompareText(a, b) == 0) << a << '|' << b;
    if (compare(a, b) <= 0 && compare(b, c) <= 0) {
      ASSERT_LE(compare(a, c), 0) << a << '|' << b << '|' << c;
    }
    if (compare(a, b) == 0) {
      ASSERT_EQ(sign(compare(a, c)), sign(compare(b, c))) << a << '|' << b << '|' << c;
    }
  }
}

TEST(Texts, CompareTextIsAnOrder) {
  CheckOrder(CompareText);
}

TEST(Texts, CompareInOrderIsAnOrder) {
  CheckOrder(CompareInOrder);
}

TEST(Texts, CompareTextGoesByTheFoldedForm) {
  std::mt19937 engine(13);
  for (int i = 0; i < 20'000; ++i) {
    const Text a = FromWide(ToWide(RandomBytes(engine)));
    const Text b = FromWide(ToWide(RandomBytes(engine)));
    const int order = Folded(ComparedPart(a)).compare(Folded(ComparedPart(b)));
    ASSERT_EQ(CompareText(a, b), (order > 0) - (order < 0)) << a << '|' << b;
  }
}

#if defined(_WIN32) || defined(REBATE_HAS_ICU)
TEST(Texts, ChineseSortsByPinyinBehindDigitsAndLatin) {
  std::vector<Text> names{"张三", "李四", "b10", "王五", "阿里", "B2", "10", "a", "2", "陈六", "Ａ1", "促销", "a b"};
  std::sort(names.begin(), names.end(), [](const Text& a, const Text& b) { return CompareInOrder(a, b) < 0; });
  const std::vector<Text> expected{"10",   "2",    "a",    "a b",  "Ａ1",  "b10", "B2",
                                   "阿里", "陈六", "促销", "李四", "王五", "张三"};
  EXPECT_EQ(names, expected);
}

// What folds to one character must be one to the system's collation as well, or texts would stand at two places.
TEST(Texts, TheCollationFoldsNoLess) {
  for (char32_t c = 0x21; c < 0x10000; ++c) {
    if (FoldCase(c) == c) continue;
    Text one;
    Text folded;
    AppendCodePoint(one, c);
    AppendCodePoint(folded, FoldCase(c));
    EXPECT_LT(CompareInOrder("促" + one + "a", "促" + folded + "b"), 0) << std::hex << static_cast<std::uint32_t>(c);
    EXPECT_GT(CompareInOrder("促" + one + "b", "促" + folded + "a"), 0) << std::hex << static_cast<std::uint32_t>(c);
  }
}
#endif

}  // namespace
}  // namespace rebate
