#include <gtest/gtest.h>

#include <limits>

#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"
#include "platform/automation/dispatch.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

TEST(Conversion, GivesTheDefaultTextOfEveryType) {
  const std::pair<Variant, Text> cases[] = {
      {Variant(), ""},
      {Variant(std::int16_t{-7}), "-7"},
      {Variant(Long{2147483647}), "2147483647"},
      {Variant(0.1), "0.1"},
      {Variant(-12.50), "-12.5"},
      {Variant(1e14), "100000000000000"},
      {Variant(1e15), "1E+15"},
      {Variant(1.5e-7), "0.00000015"},
      {Variant(1.0 / 3), "0.333333333333333"},
      {Variant(0.1f), "0.1"},
      {Variant::Currency(-125000), "-12.5"},
      {Variant::Currency(30000), "3"},
      {Variant::Decimal("12.5000"), "12.5"},
      {Variant::Decimal("-0.00"), "0"},
      {Variant::Date(*ParseDate("2026-11-22")), "2026-11-22"},
      {Variant::Date(*ParseDate("2026-11-22 07:08:09")), "2026-11-22 07:08:09"},
      {Variant::Date(*ParseDate("1899-12-29 06:00:00")), "1899-12-29 06:00:00"},
      {Variant(true), "True"},
      {Variant("一二三四五六七八九十"), "一二三四五六七八九十"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(ToText(value), text);
  EXPECT_THROW(ToText(Variant::Null()), Error);
}

// What the general numeric test accepts, with the number that it converts to.
TEST(Conversion, ReadsNumbersAsTheAutomationWorldDoes) {
  const std::pair<const char*, double> numbers[] = {
      {"12", 12},   {" 12 ", 12},   {"-3", -3},    {"+3", 3},     {"3-", -3},     {"(4)", -4},     {"1.5", 1.5},
      {".5", 0.5},  {"5.", 5},      {"1e3", 1000}, {"1E-2", .01}, {"1d2", 100},   {"1,234", 1234}, {"1,2,3.5", 123.5},
      {"&H1F", 31}, {"&hFFFF", -1}, {"&O17", 15},  {"- 7", -7},   {"\t8\r\n", 8},
  };
  for (const auto& [text, number] : numbers) {
    EXPECT_TRUE(IsNumeric(text)) << text;
    EXPECT_EQ(ParseNumber(text), number) << text;
  }
  for (const char* text : {"", " ", "a", "1a", "1 2", "--1", "-", ".", "e3", "&", "&H", "&HG", "1..2", ",", "5-+",
                           "1e999", "0x10", "一"}) {
    EXPECT_FALSE(IsNumeric(text)) << text;
  }
}

TEST(Conversion, TakesTheLeadingNumberAndIgnoresTheRest) {
  const std::pair<const char*, double> cases[] = {
      {"12.5%", 12.5}, {"  -3abc", -3}, {"abc", 0},   {"", 0},     {"1e2x", 100},
      {"1e", 1},       {".", 0},        {"1,234", 1}, {"+.5", .5}, {"-1e400", -std::numeric_limits<double>::max()},
  };
  for (const auto& [text, number] : cases) EXPECT_EQ(LeadingNumber(text), number) << text;
}

TEST(Conversion, RoundsToEvenAndRefusesWhatDoesNotFit) {
  EXPECT_EQ(ToLong(2.5), 2);
  EXPECT_EQ(ToLong(3.5), 4);
  EXPECT_EQ(ToLong(" 7 "), 7);
  EXPECT_EQ(ToLong(true), -1);
  const auto number_of = [](const Variant& value) -> Long {
    try {
      ToLong(value);
    } catch (const Error& error) {
      return error.number;
    }
    return 0;
  };
  EXPECT_EQ(number_of(2147483648.0), error_number::kOverflow);
  EXPECT_EQ(number_of("x"), error_number::kTypeMismatch);
  EXPECT_EQ(number_of(Variant::Null()), error_number::kInvalidNull);
}

TEST(Variant, KeepsLongTextsAndArraysThroughCopiesAndMoves) {
  const Text long_text(5000, 'x');
  Variant text(long_text);
  Variant copy = text;
  Variant moved = std::move(text);
  EXPECT_TRUE(text.IsEmpty());  // NOLINT: the moved-from state is part of the contract
  copy = Variant(1);
  EXPECT_EQ(moved.text(), long_text);
  EXPECT_EQ(Variant("12345678901234").text(), "12345678901234");
  EXPECT_EQ(Variant("123456789012345").text(), "123456789012345");
  const Variant array = Variant::Array({long_text, 1});
  EXPECT_EQ(Variant(array).array()[0].text(), long_text);
}

TEST(Dictionary, KeepsTheOrderOfKeysThroughRemovals) {
  const Ref<KeyList> shared = New<KeyList>(std::vector<Text>{"a", "b", "c"});
  const auto row = [&](Long from) {
    return Dictionary::RowOf(shared, [&](std::size_t i) { return Variant(from + static_cast<Long>(i)); });
  };
  const Ref<Dictionary> first_row = row(1), second_row = row(4);
  Dictionary& first = *first_row;
  Dictionary& second = *second_row;
  first.Remove("b");
  EXPECT_EQ(first.Count(), 2);
  EXPECT_EQ(first.Key(2), "c");
  EXPECT_FALSE(first.Has("b"));
  first.SetValue("b", 9);
  EXPECT_EQ(first.Key(3), "b");
  EXPECT_EQ(second.Key(2), "b");
  EXPECT_EQ(second.Value("b"), Variant(5));
  second.SetValue("b", Variant::Null());
  EXPECT_TRUE(second.GetValue("b", 1).IsNull());
  EXPECT_EQ(second.GetValue("x", 1), Variant(1));
  EXPECT_THROW(second.Value("x"), Error);
  EXPECT_THROW(second.Key(4), Error);
}

TEST(Dictionary, FindsAmongManyKeys) {
  Dictionary map;
  for (int i = 0; i < 1000; ++i) map.SetValue("key" + std::to_string(i), i);
  map.Remove("key500");
  EXPECT_FALSE(map.Has("key500"));
  EXPECT_EQ(map.Value("key501"), Variant(501));
  EXPECT_EQ(map.Key(501), "key501");
}

class Counter : public Object {
 public:
  static constexpr std::string_view kClassName = "Counter";
  bool Add(Long by, Long& total, const Text& note) {
    total += by;
    return note == "ok";
  }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("Add", &Counter::Add, {"by", "total", "[note]"})};
    return members;
  }
};

TEST(Object, AnswersByNameWithOptionalAndByRefArguments) {
  const ObjectRef counter = New<Counter>();
  Variant arguments[] = {"2", 40, "ok"};
  EXPECT_EQ(counter->Invoke("ADD", arguments), Variant(true));
  EXPECT_EQ(arguments[1], Variant(42));
  EXPECT_EQ(arguments[0], Variant("2"));
  Variant two[] = {1, 1};
  EXPECT_EQ(counter->Invoke("Add", two), Variant(false));
  const auto number_of = [&](std::string_view member, std::vector<Variant> values) -> Long {
    try {
      counter->Invoke(member, values);
    } catch (const Error& error) {
      return error.number;
    }
    return 0;
  };
  EXPECT_EQ(number_of("Sub", {}), error_number::kNoSuchMember);
  EXPECT_EQ(number_of("Add", {1}), error_number::kNotOptional);
  EXPECT_EQ(number_of("Add", {1, 2, "a", 3}), error_number::kArgumentCount);
  EXPECT_EQ(number_of("Add", {"x", 2}), error_number::kTypeMismatch);
}

TEST(Object, ContainersAnswerByNameToo) {
  const ObjectRef list = New<Vector>();
  Variant element[] = {"first"};
  list->Invoke("Add", element);
  Variant index[] = {1};
  EXPECT_EQ(list->Invoke("", index), Variant("first"));
  EXPECT_EQ(list->Invoke("UBound", {}), Variant(1));
  const ObjectRef map = New<Dictionary>();
  Variant missing[] = {"key", "default"};
  EXPECT_EQ(map->Invoke("GetValue", missing), Variant("default"));
  Variant entry[] = {"key", list};
  map->Put("value", entry);
  Variant key[] = {"key"};
  EXPECT_EQ(map->Invoke("Value", key), Variant(list));
  EXPECT_THROW(map->Put("Count", index), Error);
  EXPECT_THROW(list->Put("", entry), Error);
}

TEST(ClassObjects, AskTheSystemForWhatNobodyHasPutThere) {
  SetSystemClasses(
      [](std::string_view program_id) -> ObjectRef { return program_id == "System.List" ? New<Vector>() : nullptr; });
  EXPECT_TRUE(CreateObject("System.List"));
  EXPECT_THROW(CreateObject("System.Map"), Error);
  SetSystemClasses({});
  EXPECT_FALSE(CreateIfRegistered("System.List"));
}

TEST(ClassObjects, RefuseAnUnknownClassByItsName) {
  try {
    CreateObject("No.Such");
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number, error_number::kCannotCreate);
    EXPECT_NE(error.description.find("No.Such"), Text::npos);
  }
}

}  // namespace
}  // namespace rebate
