#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <functional>
#include <random>
#include <vector>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/eval/function.h"
#include "platform/database/tsql/eval/like.h"
#include "platform/values/ascii.h"
#include "platform/values/text.h"
#include "platform/values/text_order.h"

namespace rebate::tsql {
namespace {

DataType TypeNamed(std::string_view name) {
  const std::string_view word = name.substr(0, name.find('('));
  DataType type;
  for (int kind = 0; kind <= static_cast<int>(TypeKind::DateTime2); ++kind) {
    if (MessageName(static_cast<TypeKind>(kind)) == word) type.kind = static_cast<TypeKind>(kind);
  }
  if (word == "decimal") type.kind = TypeKind::Decimal;
  if (IsText(type.kind)) type.length = name.ends_with("(max)") ? DataType::kMaxLength : 8000;
  if (type.kind == TypeKind::DateTime2) type.scale = 7;
  if (type.kind != TypeKind::Decimal) return type;
  const std::size_t comma = name.find(',');
  std::from_chars(name.data() + word.size() + 1, name.data() + comma, type.precision);
  std::from_chars(name.data() + comma + 1, name.data() + name.size() - 1, type.scale);
  return type;
}

Value ValueOf(const DataType& type, std::string_view text) {
  if (text == "null") return {};
  const char* const end = text.data() + text.size();
  if (IsExactNumber(type.kind)) return Value::Of(Decimal::Parse(text).value());
  if (IsInteger(type.kind)) {
    std::int64_t integer = 0;
    EXPECT_EQ(std::from_chars(text.data(), end, integer).ptr, end) << text;
    return Value::Of(integer);
  }
  if (!IsFloat(type.kind)) return Value::Of(text);
  double real = 0;
  EXPECT_EQ(std::from_chars(text.data(), end, real).ptr, end) << text;
  return Value::Of(real);
}

Text TextOf(const Value& value) {
  std::array<char, 40> digits{};
  switch (value.kind) {
    case Value::Kind::Null:
      return "null";
    case Value::Kind::Integer:
      return std::to_string(value.integer);
    case Value::Kind::Real:
      return Text(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value.real).ptr);
    case Value::Kind::Decimal:
      return value.decimal.ToText();
    case Value::Kind::Text:
      break;
  }
  return Text(value.text);
}

Text ErrorOr(const std::function<Text()>& act) {
  try {
    return act();
  } catch (const Error& error) {
    EXPECT_EQ(error.number, database_error::kStatement);
    return error.description;
  }
}

// `arguments` as `type:value`, with a bar between them. An argument of the type alone is an empty text.
Text Call(std::string_view name, std::string_view arguments, std::string_view result) {
  const Function* function = FindFunction(name);
  if (function == nullptr) return "no such function";
  std::vector<DataType> types;
  std::vector<Value> values;
  const std::vector<Text> parts = Split(arguments, '|');
  for (const std::string_view part : parts) {
    const std::size_t colon = part.find(':');
    types.push_back(TypeNamed(part.substr(0, colon)));
    values.push_back(ValueOf(types.back(), part.substr(colon + 1)));
    if (values.back().IsNull() && !function->sees_nulls) return "null";
  }
  TextPool pool;
  const DataType result_type = TypeNamed(result);
  return ErrorOr([&] { return TextOf(function->body({values, types, result_type, pool})); });
}

struct Case {
  const char* function;
  const char* arguments;
  const char* result;
  Text answer;
};

void Check(std::initializer_list<Case> cases) {
  for (const Case& c : cases) {
    EXPECT_EQ(Call(c.function, c.arguments, c.result), c.answer)
        << c.function << '(' << c.arguments << ") as " << c.result;
  }
}

Text Overflow(const Text& type) {
  return "Arithmetic overflow error converting expression to data type " + type + ".";
}
const Text kBadOperation = "An invalid floating point operation occurred.";

TEST(EvalNumbers, FindsWholeNumbersAndSigns) {
  Check({{"ceiling", "decimal(3,1):1.2", "decimal(3,0)", "2"},
         {"ceiling", "decimal(3,1):-1.2", "decimal(3,0)", "-1"},
         {"ceiling", "decimal(3,1):2.0", "decimal(3,0)", "2"},
         {"ceiling", "decimal(2,2):-0.50", "decimal(2,0)", "0"},
         {"floor", "decimal(3,1):-1.2", "decimal(3,0)", "-2"},
         {"floor", "decimal(3,1):1.9", "decimal(3,0)", "1"},
         {"ceiling", "money:922337203685477.5807", "money", Overflow("money")},
         {"floor", "money:-0.0001", "money", "-1.0000"},
         {"floor", "float:-1.5", "float", "-2"},
         {"ceiling", "int:7", "int", "7"},
         {"abs", "int:-2147483648", "int", Overflow("int")},
         {"abs", "bigint:-9223372036854775808", "bigint", Overflow("bigint")},
         {"abs", "decimal(5,2):-1.50", "decimal(5,2)", "1.50"},
         {"abs", "float:-1.5", "float", "1.5"},
         {"sign", "decimal(5,2):-1.50", "decimal(5,2)", "-1.00"},
         {"sign", "int:-7", "int", "-1"},
         {"sign", "float:0", "float", "0"},
         {"sign", "money:3", "money", "1.0000"}});
}

TEST(EvalNumbers, RaisesToPowers) {
  Check({{"power", "int:2|int:30", "int", "1073741824"},
         {"power", "int:2|int:31", "int", Overflow("int")},
         {"power", "int:-2|int:31", "int", "-2147483648"},
         {"power", "bigint:3|float:39", "bigint", "4052555153018976267"},
         {"power", "bigint:10|int:2000000000", "bigint", Overflow("bigint")},
         {"power", "int:2|int:-1", "int", "0"},
         {"power", "int:-1|int:-3", "int", "-1"},
         {"power", "int:-1|bigint:9223372036854775807", "int", "-1"},
         {"power", "int:10|float:0.5", "int", "3"},
         {"power", "int:0|int:0", "int", "1"},
         {"power", "int:0|int:-1", "int", kBadOperation},
         {"power", "decimal(2,1):2.5|int:2", "decimal(38,1)", "6.3"},
         {"power", "decimal(2,1):-2.5|int:3", "decimal(38,3)", "-15.625"},
         {"power", "decimal(3,2):1.01|int:12", "decimal(38,24)", "1.126825030131969720661201"},
         {"power", "decimal(2,0):8|int:-1", "decimal(38,3)", "0.125"},
         {"power", "decimal(2,0):8|int:-1", "decimal(38,2)", "0.13"},
         {"power", "decimal(2,1):0.5|int:5000", "decimal(38,20)", "0.00000000000000000000"},
         {"power", "decimal(8,7):1.0000001|int:10000000", "decimal(38,30)", "2.718281692544966271198550225778"},
         {"power", "decimal(8,7):1.0000001|int:-10000000", "decimal(38,30)", "0.367879459565413613752175730206"},
         {"power", "decimal(2,0):10|int:38", "decimal(38,0)", Overflow("numeric")},
         {"power", "decimal(2,0):2|float:0.5", "decimal(38,4)", "1.4142"},
         {"power", "float:2|float:0.5", "float", "1.4142135623730951"},
         {"power", "float:-8|float:0.5", "float", kBadOperation},
         {"power", "float:10|float:400", "float", Overflow("float")},
         {"square", "float:3", "float", "9"},
         {"square", "float:1e200", "float", Overflow("float")}});
}

TEST(EvalNumbers, RefusesWhatAFunctionOfFloatsHasNoValueFor) {
  Check({{"sqrt", "float:-1", "float", kBadOperation},
         {"sqrt", "float:2.25", "float", "1.5"},
         {"log", "float:0", "float", kBadOperation},
         {"log", "float:8|float:2", "float", "3"},
         {"log", "float:8|float:1", "float", kBadOperation},
         {"log10", "float:1000", "float", "3"},
         {"log10", "float:-1", "float", kBadOperation},
         {"exp", "float:0", "float", "1"},
         {"exp", "float:1000", "float", Overflow("float")},
         {"asin", "float:1.1", "float", kBadOperation},
         {"acos", "float:1", "float", "0"},
         {"cot", "float:0", "float", kBadOperation},
         {"atn2", "float:0|float:0", "float", kBadOperation},
         {"atn2", "float:0|float:-1", "float", "3.141592653589793"},
         {"pi", "", "float", "3.141592653589793"},
         {"degrees", "float:3.141592653589793", "float", "180"},
         {"degrees", "int:2", "int", "114"},
         {"degrees", "int:2000000000", "int", Overflow("int")},
         {"radians", "int:180", "int", "3"},
         {"radians", "decimal(4,1):180.0", "decimal(38,18)", "3.141592653589793238"},
         {"degrees", "decimal(2,1):1.0", "decimal(38,18)", "57.295779513082320877"},
         {"rand", "int:7", "float", Call("rand", "int:7", "float")}});
  EXPECT_NE(Call("newid", "", "varchar"), Call("newid", "", "varchar"));
  EXPECT_TRUE(MatchesLike(Call("newid", "", "varchar"), "________-____-4___-[89AB]___-____________"));
}

TEST(EvalNumbers, KnowsTheTextsOfNumbers) {
  for (const char* text : {"1", " 12 ", "-1.5", "+.5", "1e5", "1E-5", "$12", "1,234.5", "+", "-", ".", "$", ","}) {
    EXPECT_EQ(Call("isnumeric", "varchar:" + Text(text), "int"), "1") << text;
  }
  for (const char* text : {"", " ", "a", "1a", "1 2", "0x1F", "1e", "--1", "1.2.3", "null"}) {
    EXPECT_EQ(Call("isnumeric", "varchar:" + Text(text), "int"), "0") << text;
  }
  Check({{"isnumeric", "money:1", "int", "1"}, {"isnumeric", "datetime:2024-01-01 00:00:00.000", "int", "0"}});
}

TEST(EvalTexts, TakesParts) {
  Check(
      {{"left", "varchar:返利abc|int:3", "varchar", "返利a"},
       {"left", "nvarchar:a😀b|int:2", "nvarchar", "a"},
       {"left", "nvarchar:a😀b|int:3", "nvarchar", "a😀"},
       {"left", "varchar:abc|int:-1", "varchar", "Invalid length parameter passed to the LEFT or SUBSTRING function."},
       {"right", "nvarchar:返利abc|int:4", "nvarchar", "利abc"},
       {"right", "varchar:abc|int:10", "varchar", "abc"},
       {"right", "varchar:abc|int:-1", "varchar", "Invalid length parameter passed to the RIGHT function."},
       {"substring", "varchar:返利abc|int:2|int:2", "varchar", "利a"},
       {"substring", "varchar:abc|int:0|int:2", "varchar", "a"},
       {"substring", "varchar:abc|int:-5|int:2", "varchar", ""},
       {"substring", "varchar:abc|int:9|int:2", "varchar", ""},
       {"substring", "varchar:abc|bigint:-9223372036854775808|bigint:9223372036854775807", "varchar", ""},
       {"substring", "varchar:abc|int:1|int:-1", "varchar",
        "Invalid length parameter passed to the LEFT or SUBSTRING function."},
       {"ltrim", "varchar:  a b  ", "varchar", "a b  "},
       {"rtrim", "varchar:  a b  ", "varchar", "  a b"},
       {"trim", "varchar:  a b  ", "varchar", "a b"},
       {"trim", "varchar:   ", "varchar", ""},
       {"stuff", "varchar:abcdef|int:2|int:3|varchar:ijklmn", "varchar", "aijklmnef"},
       {"stuff", "nvarchar:返利x|int:2|int:99|nvarchar:", "nvarchar", "返"},
       {"stuff", "varchar:abc|int:4|int:0|varchar:x", "varchar", "null"},
       {"stuff", "varchar:abc|int:0|int:1|varchar:x", "varchar", "null"},
       {"stuff", "varchar:abc|int:1|int:-1|varchar:x", "varchar", "null"}});
}

TEST(EvalTexts, LooksForTexts) {
  Check({{"charindex", "varchar:B|varchar:abc", "int", "2"},
         {"charindex", "varchar:c|varchar:abcabc|int:4", "int", "6"},
         {"charindex", "varchar:c|varchar:abc|int:-3", "int", "3"},
         {"charindex", "varchar:a|varchar:abc|int:2", "int", "0"},
         {"charindex", "varchar:|varchar:a", "int", "0"},
         {"charindex", "varchar:利|varchar:返利", "int", "2"},
         {"charindex", "nvarchar:b|nvarchar:😀B", "int", "3"},
         {"charindex", "nvarchar:ab|nvarchar:返ＡＢ", "int", "2"},
         {"charindex", "varchar:b |varchar:ab", "int", "0"},
         {"replace", "varchar:aXbx|varchar:x|varchar:-", "varchar", "a-b-"},
         {"replace", "nvarchar:1，2Ａ|nvarchar:a|nvarchar:", "nvarchar", "1，2"},
         {"replace", "varchar:aaa|varchar:aa|varchar:b", "varchar", "ba"},
         {"replace", "varchar:abc|varchar:|varchar:x", "varchar", "abc"},
         {"patindex", "varchar:%B%|varchar:abc", "int", "2"},
         {"patindex", "varchar:b%|varchar:abc", "int", "0"},
         {"patindex", "varchar:%c|varchar:abcc  ", "int", "4"},
         {"patindex", "varchar:%[0-9]%|varchar:返利12", "int", "3"},
         {"patindex", "nvarchar:%b|nvarchar:😀b", "int", "3"},
         {"patindex", "varchar:%|varchar:abc", "int", "1"},
         {"patindex", "varchar:%z%|varchar:abc", "int", "0"}});
}

TEST(EvalTexts, MakesTexts) {
  Check({{"concat_text", "varchar:a|varchar: |varchar:b", "varchar", "a b"},
         {"concat_text", "varchar:a|varchar:null", "varchar", "null"},
         {"concat_or_empty", "varchar:a|varchar:null|varchar:b", "varchar", "ab"},
         {"reverse", "nvarchar:a返😀", "nvarchar", "😀返a"},
         {"lower", "nvarchar:ÀΩ返Ａb", "nvarchar", "àω返ａb"},
         {"upper", "nvarchar:aé返ａB", "nvarchar", "AÉ返ＡB"},
         {"replicate", "varchar:ab|int:3", "varchar", "ababab"},
         {"replicate", "varchar:ab|int:-1", "varchar", "null"},
         {"replicate", "varchar:|int:2000000000", "varchar(max)", ""},
         {"replicate", "varchar:ab|int:2000000000", "varchar(max)",
          "Attempting to grow LOB beyond maximum allowed size of 2147483647 bytes."},
         {"space", "int:3", "varchar", "   "},
         {"space", "int:-1", "varchar", "null"},
         {"quotename", "nvarchar:a]b", "nvarchar", "[a]]b]"},
         {"quotename", "nvarchar:a'b|nvarchar:'", "nvarchar", "'a''b'"},
         {"quotename", "nvarchar:ab|nvarchar:}", "nvarchar", "{ab}"},
         {"quotename", "nvarchar:ab|nvarchar:x", "nvarchar", "null"},
         {"ascii", "varchar:abc", "int", "97"},
         {"ascii", "varchar:", "int", "null"},
         {"ascii", "varchar:返利", "int", "'ascii(返)' is not supported by an embedded account."},
         {"char", "int:65", "varchar", "A"},
         {"char", "int:256", "varchar", "null"},
         {"char", "int:176", "varchar", "'char(176)' is not supported by an embedded account."},
         {"unicode", "nvarchar:返利", "int", "36820"},
         {"unicode", "nvarchar:😀", "int", "55357"},
         {"nchar", "int:36820", "nvarchar", "返"},
         {"nchar", "int:65536", "nvarchar", "null"},
         {"nchar", "int:55357", "nvarchar", "'nchar(55357)' is not supported by an embedded account."},
         {"str", "float:123.45", "varchar", "       123"},
         {"str", "float:123.45|int:6|int:1", "varchar", " 123.5"},
         {"str", "float:123.456|int:6|int:2", "varchar", "123.46"},
         {"str", "float:123.456|int:5|int:2", "varchar", "123.5"},
         {"str", "float:-99.96|int:5|int:1", "varchar", " -100"},
         {"str", "float:123.45|int:2|int:2", "varchar", "**"},
         {"str", "float:1|int:0", "varchar", "null"}});
}

TEST(EvalTexts, CutsWhatHasNoRoom) {
  const auto length = [](const char* name, const Text& arguments, const char* result, bool national) {
    return CountUnits(Call(name, arguments, result), national);
  };
  EXPECT_EQ(length("replicate", "varchar:abc|int:9000", "varchar", false), 8000u);
  EXPECT_EQ(length("replicate", "varchar:返|int:9000", "varchar", false), 8000u);
  EXPECT_EQ(length("replicate", "nvarchar:返|int:9000", "nvarchar", true), 4000u);
  EXPECT_EQ(length("replicate", "nvarchar:返|int:9000", "nvarchar(max)", true), 9000u);
  EXPECT_EQ(length("space", "int:9000", "varchar", false), 8000u);
  const Text half(5000, 'x');
  EXPECT_EQ(length("concat_text", "varchar:" + half + "|varchar:" + half, "varchar", false), 8000u);
  EXPECT_EQ(length("concat_text", "varchar:" + half + "|varchar:" + half, "varchar(max)", false), 10000u);
  EXPECT_EQ(length("replace", "varchar:" + half + "|varchar:x|varchar:yy", "varchar", false), 8000u);
  EXPECT_EQ(length("stuff", "nvarchar:" + half + "|int:1|int:0|nvarchar:yy", "nvarchar", true), 4000u);
}

TEST(EvalLike, FollowsTheSigns) {
  const struct {
    const char* text;
    const char* pattern;
    bool matches;
  } cases[] = {{"Alpha", "alp%", true},
               {"beta", "[a-c]ETA", true},
               {"beta", "[^a-c]eta", false},
               {"x", "[]x]", true},
               {"]", "[]]", true},
               {"]x", "[]]x", true},
               {"a", "[^]]", true},
               {"[", "[[]", true},
               {"]", "]", true},
               {"a-b", "a[-]b", true},
               {"a-b", "a[x-]b", true},
               {"5%", "5[%]", true},
               {"abc", "[abc", false},
               {"", "%", true},
               {"", "", true},
               {"", "_", false},
               {"abc  ", "abc", true},
               {"abc  ", "%c", true},
               {"abc", "abc ", false},
               {"abc ", "abc_", true},
               {"  abc", "abc", false},
               {"返利", "_利", true},
               {"ＡＢ", "ab", true},
               {"ab", "ＡＢ", true},
               {"aab", "%ab", true},
               {"abab", "%ab%ab", true},
               {"aba", "%ab%ab", false},
               {"a^b", "a[b^]b", true},
               {"zzz", "%%%z%%", true},
               {"mississippi", "%iss%ip%i", true}};
  for (const auto& c : cases) EXPECT_EQ(MatchesLike(c.text, c.pattern), c.matches) << c.text << " like " << c.pattern;
  Check({{"like", "varchar:a_c|varchar:a!_c|varchar:!", "bit", "1"},
         {"like", "varchar:abc|varchar:a!_c|varchar:!", "bit", "0"},
         {"like", "varchar:a!c|varchar:a!!c|varchar:!", "bit", "1"},
         {"like", "varchar:abc|varchar:abc!|varchar:!", "bit", "0"},
         {"like", "varchar:a]|varchar:a[!]]|varchar:!", "bit", "1"},
         {"like", "varchar:5%|varchar:5%%|varchar:%", "bit", "1"},
         {"like", "varchar:57|varchar:5%%|varchar:%", "bit", "0"},
         {"like", "varchar:a|varchar:a|varchar:", "bit",
          "The invalid escape character \"\" was specified in a LIKE predicate."},
         {"like", "varchar:a|varchar:a|varchar:!!", "bit",
          "The invalid escape character \"!!\" was specified in a LIKE predicate."},
         {"like", "varchar:null|varchar:a", "bit", "null"}});
}

TEST(EvalLike, RangesGoByTheAccountsOrder) {
  for (const char* character : {"5", "a", "z", "返", "座", "做", "é", "-", "，"}) {
    for (const auto& [low, high] : {std::pair{"0", "9"}, {"b", "返"}, {"吖", "座"}, {"!", "z"}}) {
      const bool inside = CompareInOrder(low, character) <= 0 && CompareInOrder(character, high) <= 0;
      EXPECT_EQ(MatchesLike(character, Text("[") + low + '-' + high + ']'), inside) << character << low << high;
    }
  }
}

// What a pattern of `%`, `_` and plain characters means, said as plainly as can be.
bool Means(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.find_first_not_of(' ') == std::string_view::npos;
  if (pattern.front() == '%') {
    return Means(pattern.substr(1), text) || (!text.empty() && Means(pattern, text.substr(1)));
  }
  return !text.empty() && (pattern.front() == '_' || pattern.front() == text.front()) &&
         Means(pattern.substr(1), text.substr(1));
}

TEST(EvalLike, AgreesWithThePlainMeaning) {
  std::mt19937 generator(1);
  const auto random_text = [&](std::string_view letters) {
    Text text;
    for (auto size = generator() % 9; size > 0; --size) text += letters[generator() % letters.size()];
    return text;
  };
  int matched = 0;
  for (int i = 0; i < 20000; ++i) {
    const Text text = random_text("ab ");
    const Text pattern = random_text("ab %%_");
    const bool means = Means(pattern, text);
    matched += means;
    ASSERT_EQ(MatchesLike(text, pattern), means) << '"' << text << "\" like \"" << pattern << '"';
    const auto found = FindLike(text, "%" + pattern);
    ASSERT_EQ(found.has_value(), Means("%" + pattern, text)) << '"' << text << "\" like \"%" << pattern << '"';
  }
  EXPECT_GT(matched, 2000);
}

}  // namespace
}  // namespace rebate::tsql
