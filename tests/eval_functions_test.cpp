#include <gtest/gtest.h>

#include <array>
#include <boost/multiprecision/cpp_int.hpp>
#include <charconv>
#include <functional>
#include <random>
#include <vector>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/eval/aggregate.h"
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
const Text kByZero = "Divide by zero error encountered.";
const Text kBadOperation = "An invalid floating point operation occurred.";

TEST(EvalArithmetic, KeepsDecimalsExact) {
  Check({{"add", "decimal(5,2):0.10|decimal(5,2):0.20", "decimal(6,2)", "0.30"},
         {"subtract", "decimal(5,2):1|decimal(5,2):1.01", "decimal(6,2)", "-0.01"},
         {"multiply", "decimal(5,2):1.25|decimal(5,2):1.25", "decimal(11,4)", "1.5625"},
         {"multiply", "decimal(38,10):0.15|decimal(38,10):0.15", "decimal(38,3)", "0.023"},
         {"multiply", "decimal(38,10):-0.15|decimal(38,10):0.15", "decimal(38,3)", "-0.023"},
         {"divide", "decimal(5,2):2|decimal(5,2):3", "decimal(11,8)", "0.66666666"},
         {"divide", "decimal(5,2):-2|decimal(5,2):3", "decimal(11,8)", "-0.66666666"},
         {"modulo", "decimal(5,2):-7.5|decimal(5,2):2", "decimal(5,2)", "-1.50"},
         {"divide", "decimal(5,2):1|decimal(5,2):0.00", "decimal(11,8)", kByZero},
         {"modulo", "decimal(5,2):1|decimal(5,2):0", "decimal(5,2)", kByZero},
         {"add", "decimal(2,0):99|decimal(2,0):1", "decimal(2,0)", Overflow("numeric")},
         {"add", "decimal(2,1):0.9|decimal(2,1):0.2", "decimal(1,1)", Overflow("numeric")},
         {"add", "decimal(38,0):99999999999999999999999999999999999999|decimal(38,0):1", "decimal(38,0)",
          Overflow("numeric")},
         {"multiply", "decimal(38,0):-99999999999999999999|decimal(38,0):99999999999999999999", "decimal(38,0)",
          Overflow("numeric")},
         {"negate", "decimal(5,2):0.00", "decimal(5,2)", "0.00"}});
}

TEST(EvalArithmetic, KeepsMoneyToFourPlaces) {
  Check({{"multiply", "money:0.0001|money:0.5", "money", "0.0001"},
         {"multiply", "money:0.0001|money:0.4999", "money", "0.0000"},
         {"divide", "money:2|money:3", "money", "0.6666"},
         {"modulo", "money:10.5|money:4", "money", "2.5000"},
         {"add", "money:922337203685477.5807|money:0.0001", "money", Overflow("money")},
         {"subtract", "money:-922337203685477.5807|money:0.0001", "money", "-922337203685477.5808"},
         {"negate", "money:-922337203685477.5808", "money", Overflow("money")},
         {"add", "smallmoney:214748.3647|smallmoney:0.0001", "smallmoney", Overflow("smallmoney")},
         {"divide", "money:1|money:0", "money", kByZero}});
}

TEST(EvalArithmetic, KeepsFloatsFinite) {
  Check({{"add", "float:0.1|float:0.2", "float", "0.30000000000000004"},
         {"add", "real:0.1|real:0.2", "real", "0.30000001192092896"},
         {"divide", "float:1|float:0", "float", kByZero},
         {"divide", "float:0|float:-0", "float", kByZero},
         {"multiply", "float:1e300|float:1e300", "float", Overflow("float")},
         {"multiply", "real:1e30|real:1e30", "real", Overflow("real")},
         {"negate", "float:1.5", "float", "-1.5"}});
}

TEST(EvalArithmetic, RefusesWhatLeavesAnInteger) {
  struct Kind {
    const char* name;
    std::int64_t first, last;
  };
  using Wide = boost::multiprecision::int128_t;
  const Kind kinds[] = {{"tinyint", 0, 255},
                        {"smallint", -32768, 32767},
                        {"int", INT32_MIN, INT32_MAX},
                        {"bigint", INT64_MIN, INT64_MAX}};
  const auto exact = [](std::string_view name, Wide l, Wide r) -> Wide {
    return name == "add"        ? l + r
           : name == "subtract" ? l - r
           : name == "multiply" ? l * r
           : name == "divide"   ? l / r
                                : l % r;
  };
  for (const Kind& kind : kinds) {
    const std::int64_t values[] = {
        kind.first, kind.first + 1,          kind.first / 2,          0, 1, 2, 3, 7, kind.last / 2,
        kind.last,  kind.first < 0 ? -1 : 5, kind.first < 0 ? -3 : 16};
    for (const char* name : {"add", "subtract", "multiply", "divide", "modulo"}) {
      const bool divides = std::string_view("divide modulo").find(name) != std::string_view::npos;
      for (const std::int64_t left : values) {
        for (const std::int64_t right : values) {
          const Text arguments =
              Text(kind.name) + ':' + std::to_string(left) + '|' + kind.name + ':' + std::to_string(right);
          const Wide number = divides && right == 0 ? 0 : exact(name, left, right);
          const bool fits = number >= kind.first && number <= kind.last;
          const bool narrow = kind.last < INT32_MAX;
          const Text told = narrow ? "Arithmetic overflow error for data type " + Text(kind.name) +
                                         ", value = " + std::to_string(static_cast<std::int64_t>(number)) + "."
                                   : Overflow(kind.name);
          const Text expected = divides && right == 0 ? kByZero
                                : fits                ? std::to_string(static_cast<std::int64_t>(number))
                                                      : told;
          EXPECT_EQ(Call(name, arguments, kind.name), expected) << name << ' ' << arguments;
        }
      }
    }
  }
  Check({{"negate", "int:-2147483648", "int", Overflow("int")},
         {"negate", "bigint:-9223372036854775808", "bigint", Overflow("bigint")},
         {"negate", "tinyint:255", "smallint", "-255"},
         {"add", "int:null|int:1", "int", "null"}});
}

TEST(EvalArithmetic, CombinesBits) {
  Check({{"bit_and", "int:12|int:10", "int", "8"},
         {"bit_or", "int:-8|int:3", "int", "-5"},
         {"bit_xor", "int:12|int:10", "int", "6"},
         {"bit_not", "int:5", "int", "-6"},
         {"bit_not", "tinyint:5", "tinyint", "250"},
         {"bit_not", "bit:1", "bit", "0"},
         {"bit_not", "bigint:-9223372036854775808", "bigint", "9223372036854775807"}});
}

TEST(EvalNumbers, RoundsAndCuts) {
  Check({{"round", "decimal(4,3):2.345|int:2", "decimal(4,3)", "2.350"},
         {"round", "decimal(4,3):-2.345|int:2", "decimal(4,3)", "-2.350"},
         {"round", "decimal(4,3):2.349|int:2|int:1", "decimal(4,3)", "2.340"},
         {"round", "decimal(5,2):748.58|int:-1", "decimal(5,2)", "750.00"},
         {"round", "decimal(5,2):748.58|int:-3", "decimal(5,2)", Overflow("numeric")},
         {"round", "decimal(5,2):748.58|int:-3|int:1", "decimal(5,2)", "0.00"},
         {"round", "decimal(5,2):748.58|int:-2000000000", "decimal(5,2)", "0.00"},
         {"round", "decimal(5,2):748.58|int:2000000000", "decimal(5,2)", "748.58"},
         {"round", "money:1.23455|int:4", "money", "1.2346"},
         {"round", "int:1250|int:-2", "int", "1300"},
         {"round", "int:-1250|int:-2", "int", "-1300"},
         {"round", "int:1250|int:-2|int:1", "int", "1200"},
         {"round", "int:2147483647|int:-9", "int", "2000000000"},
         {"round", "int:2147483647|int:-2", "int", "2147483600"},
         {"round", "int:2147483647|int:-1", "int", Overflow("int")},
         {"round", "bigint:9223372036854775807|int:-19", "bigint", Overflow("bigint")},
         {"round", "float:2.675|int:2", "float", "2.68"},
         {"round", "float:-2.5|int:0", "float", "-3"},
         {"round", "float:1e300|int:2", "float", "1e+300"},
         {"round", "float:1.6e300|int:-300", "float", "2e+300"},
         {"round", "float:1e300|int:-400", "float", "0"},
         {"round", "float:1e-300|int:2", "float", "0"}});
}

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

TEST(EvalTexts, MeasuresByType) {
  Check({{"len", "varchar:返利 a  ", "int", "4"},
         {"len", "nvarchar:😀 ", "int", "2"},
         {"len", "varchar:   ", "int", "0"},
         {"datalength", "varchar:返利 a ", "int", "7"},
         {"datalength", "nvarchar:返😀 ", "int", "8"},
         {"datalength", "tinyint:1", "int", "1"},
         {"datalength", "int:1", "int", "4"},
         {"datalength", "float:1", "int", "8"},
         {"datalength", "decimal(9,2):1", "int", "5"},
         {"datalength", "decimal(10,2):1", "int", "9"},
         {"datalength", "decimal(28,2):1", "int", "13"},
         {"datalength", "decimal(38,2):1", "int", "17"},
         {"datalength", "date:2024-01-01", "int", "3"}});
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

Text PartCode(DatePart part) {
  return "int:" + std::to_string(static_cast<int>(part)) + "|";
}

TEST(EvalDates, AddsAndCounts) {
  const struct {
    const char* function;
    DatePart part;
    const char* arguments;
    const char* result;
    Text answer;
  } cases[] = {
      {"dateadd", DatePart::Month, "int:1|datetime:2024-01-31 10:00:00.000", "datetime", "2024-02-29 10:00:00.000"},
      {"dateadd", DatePart::Quarter, "int:-1|date:2024-05-31", "date", "2024-02-29"},
      {"dateadd", DatePart::Millisecond, "int:2|datetime:2024-01-01 00:00:00.000", "datetime",
       "2024-01-01 00:00:00.003"},
      {"dateadd", DatePart::Second, "int:30|smalldatetime:2024-01-01 00:00:00.000", "smalldatetime",
       "2024-01-01 00:01:00.000"},
      {"dateadd", DatePart::Nanosecond, "int:100|datetime2:2024-01-01 00:00:00.0000000", "datetime2",
       "2024-01-01 00:00:00.0000001"},
      {"dateadd", DatePart::Year, "int:8000|datetime:2024-01-01 00:00:00.000", "datetime",
       "Adding a value to a 'datetime' column caused an overflow."},
      {"dateadd", DatePart::Year, "int:-300|datetime:2024-01-01 00:00:00.000", "datetime",
       "Adding a value to a 'datetime' column caused an overflow."},
      {"dateadd", DatePart::Day, "bigint:9223372036854775807|date:2024-01-01", "date",
       "Adding a value to a 'date' column caused an overflow."},
      {"dateadd", DatePart::Hour, "int:1|date:2024-01-01", "date",
       "The datepart hour is not supported by date function dateadd for data type date."},
      {"dateadd", DatePart::Microsecond, "int:1|datetime:2024-01-01 00:00:00.000", "datetime",
       "The datepart microsecond is not supported by date function dateadd for data type datetime."},
      {"datediff", DatePart::Year, "datetime:2023-12-31 23:59:59.997|datetime:2024-01-01 00:00:00.000", "int", "1"},
      {"datediff", DatePart::Week, "date:2024-06-08|date:2024-06-09", "int", "1"},
      {"datediff", DatePart::Hour, "date:2024-06-09|datetime:2024-06-08 23:59:00.000", "int", "-1"},
      {"datediff", DatePart::Millisecond, "datetime:2000-01-01 00:00:00.000|datetime:2024-01-01 00:00:00.000", "int",
       "The datediff function resulted in an overflow. The number of dateparts separating two date/time instances is "
       "too large. Try to use datediff with a less precise datepart."},
      {"datediff_big", DatePart::Millisecond, "datetime:2000-01-01 00:00:00.000|datetime:2024-01-01 00:00:00.000",
       "bigint", "757382400000"},
      {"datediff_big", DatePart::Nanosecond, "datetime2:0001-01-01 00:00:00.0000000|date:9999-12-31", "bigint",
       "The datediff_big function resulted in an overflow. The number of dateparts separating two date/time instances "
       "is too large. Try to use datediff_big with a less precise datepart."},
      {"datepart", DatePart::Weekday, "date:2024-06-09", "int", "1"},
      {"datepart", DatePart::Millisecond, "datetime:2024-06-09 01:02:03.457", "int", "457"},
      {"datepart", DatePart::Minute, "date:2024-06-09", "int",
       "The datepart minute is not supported by date function datepart for data type date."},
      {"datename", DatePart::Month, "date:2024-06-09", "nvarchar", "June"},
      {"datename", DatePart::Day, "date:2024-06-09", "nvarchar", "9"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Call(c.function, PartCode(c.part) + c.arguments, c.result), c.answer) << c.function << c.arguments;
  }
}

TEST(EvalDates, MakesAndReadsDates) {
  Check({{"year", "datetime:2024-06-09 01:02:03.457", "int", "2024"},
         {"month", "date:2024-06-09", "int", "6"},
         {"day", "datetime2:2024-06-09 23:59:59.9999999", "int", "9"},
         {"eomonth", "date:2024-02-01", "date", "2024-02-29"},
         {"eomonth", "datetime:2023-12-31 23:00:00.000|int:2", "date", "2024-02-29"},
         {"eomonth", "date:2024-03-31|int:-1", "date", "2024-02-29"},
         {"eomonth", "date:9999-12-31|int:1", "date", "Adding a value to a 'date' column caused an overflow."},
         {"datefromparts", "int:2024|int:2|int:29", "date", "2024-02-29"},
         {"datefromparts", "int:2023|int:2|int:29", "date",
          "Cannot construct data type date, some of the arguments have values which are not valid."},
         {"datefromparts", "int:-1|int:2|int:29", "date",
          "Cannot construct data type date, some of the arguments have values which are not valid."},
         {"isdate", "varchar:2024-02-29", "int", "1"},
         {"isdate", "varchar:2023-02-29", "int", "0"},
         {"isdate", "varchar:1752-12-31", "int", "0"},
         {"isdate", "varchar: ", "int", "0"},
         {"isdate", "varchar:null", "int", "0"},
         {"add_days", "datetime:2024-01-01 18:00:00.000|datetime:1900-01-02 12:00:00.000", "datetime",
          "2024-01-03 06:00:00.000"},
         {"subtract_days", "datetime:2024-01-01 06:00:00.000|datetime:1900-01-02 12:00:00.000", "datetime",
          "2023-12-30 18:00:00.000"},
         {"subtract_days", "datetime:2024-01-01 00:00:00.000|datetime:2024-01-01 00:00:00.000", "datetime",
          "1900-01-01 00:00:00.000"},
         {"subtract_days", "datetime:1753-01-01 00:00:00.000|datetime:1900-01-02 00:00:00.000", "datetime",
          "Adding a value to a 'datetime' column caused an overflow."}});
}

TEST(EvalAggregates, FitTheirType) {
  const struct {
    AggregateKind kind;
    const char* type;
    const char* values;
    const char* result;
    Text answer;
  } cases[] = {
      {AggregateKind::Sum, "int", "1|null|2", "int", "3"},
      {AggregateKind::Sum, "int", "null|null", "int", "null"},
      {AggregateKind::Sum, "int", "", "int", "null"},
      {AggregateKind::Sum, "int", "2147483647|1", "int", Overflow("int")},
      {AggregateKind::Sum, "int", "2147483647|1|-1", "int", "2147483647"},
      {AggregateKind::Sum, "bigint", "9223372036854775807|9223372036854775807|-9223372036854775807", "bigint",
       "9223372036854775807"},
      {AggregateKind::Sum, "bigint", "9223372036854775807|1", "bigint", Overflow("bigint")},
      {AggregateKind::Sum, "bigint", "-9223372036854775808|-1|1", "bigint", "-9223372036854775808"},
      {AggregateKind::Sum, "bigint", "-9223372036854775808|-9223372036854775808|1", "bigint", Overflow("bigint")},
      {AggregateKind::Avg, "int", "1|2|null", "int", "1"},
      {AggregateKind::Avg, "int", "-1|-2", "int", "-1"},
      {AggregateKind::Avg, "int", "2147483647|1", "int", Overflow("int")},
      {AggregateKind::Sum, "decimal(5,2)", "0.10|0.20|0.30", "decimal(38,2)", "0.60"},
      {AggregateKind::Avg, "decimal(5,2)", "1|1|0", "decimal(38,6)", "0.666666"},
      {AggregateKind::Sum, "decimal(38,0)", "99999999999999999999999999999999999999|1", "decimal(38,0)",
       Overflow("numeric")},
      {AggregateKind::Sum, "money", "922337203685477.5807|0.0001", "money", Overflow("money")},
      {AggregateKind::Avg, "money", "1|1|0", "money", "0.6666"},
      {AggregateKind::Sum, "float", "0.5|0.25", "float", "0.75"},
      {AggregateKind::Sum, "float", "1e308|1e308", "float", Overflow("float")},
      {AggregateKind::Avg, "float", "1|2", "float", "1.5"},
      {AggregateKind::Var, "float", "1000000001|1000000002|1000000003", "float", "1"},
      {AggregateKind::VarP, "float", "2|4|4|4|5|5|7|9", "float", "4"},
      {AggregateKind::StdevP, "float", "2|4|4|4|5|5|7|9", "float", "2"},
      {AggregateKind::Stdev, "float", "5", "float", "null"},
      {AggregateKind::StdevP, "float", "5", "float", "0"},
  };
  for (const auto& c : cases) {
    const Text answer = ErrorOr([&] {
      const DataType type = TypeNamed(c.type);
      Accumulator accumulator(c.kind, TypeNamed(c.result));
      for (const Text& value : Split(c.values, '|')) accumulator.Add(ValueOf(type, value));
      return TextOf(accumulator.Result());
    });
    EXPECT_EQ(answer, c.answer) << c.type << ' ' << c.values;
  }
}

}  // namespace
}  // namespace rebate::tsql
