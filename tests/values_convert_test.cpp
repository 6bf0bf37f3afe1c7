#include <gtest/gtest.h>

#include "platform/automation/error.h"
#include "platform/database/tsql/eval/convert.h"
#include "platform/database/tsql/parse/tree.h"

namespace rebate::tsql {
namespace {

const DataType kInt = IntType();
const DataType kBigInt = TypeOf(TypeKind::BigInt);
const DataType kMoney = TypeOf(TypeKind::Money);
const DataType kSmallMoney = TypeOf(TypeKind::SmallMoney);
const DataType kFloat = FloatType();
const DataType kReal = TypeOf(TypeKind::Real);
const DataType kDateTime = DateTimeType();
const DataType kSmallDateTime = TypeOf(TypeKind::SmallDateTime);
const DataType kDate = TypeOf(TypeKind::Date);
const DataType kDateTime2{TypeKind::DateTime2, 0, 0, 7};

DataType Dec(int precision, int scale) {
  return DecimalType(precision, scale);
}
DataType VarChar(int length) {
  return TextType(TypeKind::VarChar, length);
}
const DataType kText = VarChar(DataType::kMaxLength);

// The value of the type whose text is `text`; of dates, the text as a column keeps it.
Value Make(const Text& text, const DataType& type, TextPool& pool) {
  if (text == "null") return {};
  if (IsText(type.kind) || IsDate(type.kind)) return Value::Of(pool.Keep(text));
  return Convert(Value::Of(pool.Keep(text)), kText, type, Purpose::Cast, pool);
}

// What `text` of type `from` becomes, or the error's words.
Text Result(const Text& text, const DataType& from, const DataType& to, Purpose purpose = Purpose::Cast,
            int style = 0) {
  TextPool pool;
  try {
    const Value value = Convert(Make(text, from, pool), from, to, purpose, pool, style);
    switch (value.kind) {
      case Value::Kind::Null:
        return "null";
      case Value::Kind::Integer:
        return std::to_string(value.integer);
      case Value::Kind::Real:
        return Text(Convert(value, FloatType(), kText, Purpose::Cast, pool, 3).text);
      case Value::Kind::Decimal:
        return value.decimal.ToText();
      case Value::Kind::Text:
        return Text(value.text);
    }
  } catch (const Error& error) {
    return error.description;
  }
  return {};
}

struct Case {
  Text text;
  DataType from, to;
  Text result;
};

void Check(const std::vector<Case>& cases, Purpose purpose = Purpose::Cast) {
  for (const Case& c : cases) {
    EXPECT_EQ(Result(c.text, c.from, c.to, purpose), c.result)
        << c.text << ": " << Declaration(c.from) << " to " << Declaration(c.to);
  }
}

const Text kDateFailed = "Conversion failed when converting date and/or time from character string.";

TEST(Convert, IntegersAreBounded) {
  Check({
      {"255", kInt, TypeOf(TypeKind::TinyInt), "255"},
      {"256", kInt, TypeOf(TypeKind::TinyInt), "Arithmetic overflow error for data type tinyint, value = 256."},
      {"-1", kInt, TypeOf(TypeKind::TinyInt), "Arithmetic overflow error for data type tinyint, value = -1."},
      {"2147483648", kBigInt, kInt, "Arithmetic overflow error converting expression to data type int."},
      {"7", kInt, TypeOf(TypeKind::Bit), "1"},
      {"0.99999999999", Dec(38, 20), kInt, "0"},
      {"-1.9", Dec(5, 1), kInt, "-1"},
      {"2147483648", Dec(10, 0), kInt, "Arithmetic overflow error converting expression to data type int."},
      {"9223372036854775807.9", Dec(38, 1), kBigInt, "9223372036854775807"},
      {"2.5", kMoney, kInt, "3"},
      {"-2.9", kFloat, kInt, "-2"},
      {"3e9", kFloat, kInt, "Arithmetic overflow error for type int, value = 3000000000.000000."},
      {"9.3e18", kFloat, kBigInt, "Arithmetic overflow error for type bigint, value = 9300000000000000000.000000."},
      {" 0 ", kText, kInt, "0"},
      {"", kText, kInt, "0"},
      {"+7", kText, kInt, "7"},
      {"12.0", kText, kInt, "Conversion failed when converting the varchar value '12.0' to data type int."},
      {"1e2", TextType(TypeKind::NVarChar, 9), kInt,
       "Conversion failed when converting the nvarchar value '1e2' to data type int."},
      {"2147483648", kText, kInt, "The conversion of the varchar value '2147483648' overflowed an int column."},
      {"256", kText, TypeOf(TypeKind::TinyInt),
       "The conversion of the varchar value '256' overflowed an INT1 column. Use a larger integer column."},
      {"x", kText, kBigInt, "Error converting data type varchar to bigint."},
      {"True", kText, TypeOf(TypeKind::Bit), "1"},
      {"null", kText, kInt, "null"},
  });
  Check({{"5,7", kText, kInt, "null"},
         {"", kText, kInt, "0"},
         {"12.0", kText, kInt, "Conversion failed when converting the varchar value '12.0' to data type int."},
         {"x", kText, Dec(9, 2), "null"},
         {"x", kText, kMoney, "null"},
         {"x", kText, kFloat, "null"}},
        Purpose::Match);
}

TEST(Convert, DecimalsAndMoneyAreExact) {
  const Text large = "1234567890123456789012345678.0123456789";
  Check({
      {large, kText, Dec(38, 10), large},
      {"0.125", Dec(10, 3), Dec(10, 2), "0.13"},
      {"-0.125", Dec(10, 3), Dec(10, 2), "-0.13"},
      {"99.995", Dec(10, 3), Dec(4, 2), "Arithmetic overflow error converting numeric to data type numeric."},
      {"0.99", Dec(2, 2), Dec(2, 2), "0.99"},
      {"100", kInt, Dec(4, 2), "Arithmetic overflow error converting int to data type numeric."},
      {"0.1", kFloat, Dec(38, 20), "0.10000000000000000000"},
      {"2.675", kFloat, Dec(10, 2), "2.68"},
      {"1e38", kFloat, Dec(38, 0), "Arithmetic overflow error converting float to data type numeric."},
      {"1e2", kText, Dec(10, 2), "Error converting data type varchar to numeric."},
      {"", kText, Dec(10, 2), "Error converting data type varchar to numeric."},
      {"1,5", kText, Dec(10, 2), "Error converting data type varchar to numeric."},
      {"0.1249" + Text(60, '9'), kText, Dec(10, 2), "0.12"},
      {"0.125" + Text(60, '0'), kText, Dec(10, 2), "0.13"},
      {"", kText, kMoney, "0.0000"},
      {"-$1,234.56785", kText, kMoney, "-1234.5679"},
      {"￥12", kText, kMoney, "12.0000"},
      {"$", kText, kMoney, "0.0000"},
      {"1e2", kText, kMoney, "Cannot convert a char value to money. The char value has incorrect syntax."},
      {"922337203685477.5807", Dec(19, 4), kMoney, "922337203685477.5807"},
      {"922337203685477.5808", Dec(19, 4), kMoney, "Arithmetic overflow error converting numeric to data type money."},
      {"214748.36475", Dec(19, 5), kSmallMoney,
       "Arithmetic overflow error converting numeric to data type smallmoney."},
      {"0.00005", Dec(19, 5), kMoney, "0.0001"},
      {"1900-01-02 12:00:00.000", kDateTime, Dec(10, 2), "1.50"},
      {"1900-01-01 08:00:00.000", kDateTime, Dec(30, 18), "0.333333333333333333"},
  });
}

TEST(Convert, FloatsTakeExponentsAndRealsHaveSinglePrecision) {
  Check({
      {"1e2", kText, kFloat, "1.0000000000000000e+002"},
      {"", kText, kFloat, "0.0000000000000000e+000"},
      {"1e400", kText, kFloat, "Error converting data type varchar to float."},
      {"0.1", kText, kReal, "1.0000000149011612e-001"},
      {"1e39", kFloat, kReal,
       "Arithmetic overflow error for type real, value = 999999999999999939709166371603178586112.000000."},
      {"1899-12-31 18:00:00.000", kDateTime, kFloat, "-2.5000000000000000e-001"},
  });
}

TEST(Convert, NumbersBecomeTextWithTheirTypesDigits) {
  Check({
      {"1.5", Dec(10, 4), kText, "1.5000"},
      {"1.005", kMoney, kText, "1.01"},
      {"-0.5", kMoney, kText, "-0.50"},
      {"1234567", kFloat, kText, "1.23457e+006"},
      {"0.1", kReal, kText, "0.1"},
      {"12345", kInt, VarChar(3), "*"},
      {"12345", kInt, TextType(TypeKind::Char, 3), "*  "},
      {"12345", kInt, TextType(TypeKind::NVarChar, 3),
       "Arithmetic overflow error converting expression to data type nvarchar."},
      {"12345", kBigInt, VarChar(3), "Arithmetic overflow error converting expression to data type varchar."},
      {"12.50", Dec(5, 2), VarChar(3), "Arithmetic overflow error converting numeric to data type varchar."},
      {"12.5", kMoney, VarChar(3), "There is insufficient result space to convert a money value to varchar."},
      {"2024-01-05 15:04:05.123", kDateTime, VarChar(6), "Jan  5"},
      {"2024-01-05", kDate, kText, "2024-01-05"},
  });
  EXPECT_EQ(Result("-1234567.891", kMoney, kText, Purpose::Cast, 1), "-1,234,567.89");
  EXPECT_EQ(Result("123", kMoney, kText, Purpose::Cast, 1), "123.00");
  EXPECT_EQ(Result("-1234567.891", kMoney, kText, Purpose::Cast, 2), "-1234567.8910");
  EXPECT_EQ(Result("0.1", kFloat, kText, Purpose::Cast, 2), "1.000000000000000e-001");
  EXPECT_EQ(Result("2024-01-05 15:04:05.123", kDateTime, VarChar(10), Purpose::Cast, 120), "2024-01-05");
  EXPECT_EQ(Result("2024-01-05 15:04:05.123", kDateTime, kText, Purpose::Cast, 130),
            "130 is not a valid style number when converting from datetime to a character string.");
}

TEST(Convert, TextsFitByBytesOrUnits) {
  Check({
      {"促销ab", kText, VarChar(5), "促销a"},
      {"促销ab", kText, VarChar(3), "促"},
      {"促销ab", kText, TextType(TypeKind::NVarChar, 3), "促销a"},
      {"促", kText, TextType(TypeKind::Char, 4), "促  "},
      {"促", kText, TextType(TypeKind::NChar, 4), "促   "},
      {"促销", kText, TextType(TypeKind::Char, 3), "促 "},
      {"abc  ", kText, VarChar(5), "abc  "},
  });
  Check({{"促销", kText, VarChar(3), "String or binary data would be truncated."},
         {"促   ", kText, VarChar(3), "促 "},
         {"12345", kInt, VarChar(3), "Arithmetic overflow error converting expression to data type varchar."}},
        Purpose::Assign);
}

TEST(Convert, DatesGoAmongEachOtherTextsAndNumbers) {
  Check({
      {"2024-01-05 12:30AM", kText, kDateTime, "2024-01-05 00:30:00.000"},
      {"2024-01-05 10:00:29.999", kText, kSmallDateTime, "2024-01-05 10:01:00.000"},
      {"2024-01-05 10:00:00.1234567", kText, kDateTime2, "2024-01-05 10:00:00.1234567"},
      {"2024-01-05 10:00:00.1234567", kDateTime2, kDateTime, "2024-01-05 10:00:00.123"},
      {"2024-01-05 10:00:00.123", kDateTime, kDate, "2024-01-05"},
      {"2024-01-05", kDate, kDateTime, "2024-01-05 00:00:00.000"},
      {"1600-01-01", kDate, kDateTime,
       "The conversion of a date data type to a datetime data type resulted in an out-of-range value."},
      {"2026-02-29", kText, kDateTime,
       "The conversion of a varchar data type to a datetime data type resulted in an out-of-range value."},
      {"2026-02-29", kText, kDate, kDateFailed},
      {"2026-01-257", kText, kDateTime, kDateFailed},
      {"x", kText, kSmallDateTime, "Conversion failed when converting character string to smalldatetime data type."},
      {"1.5", Dec(3, 1), kDateTime, "1900-01-02 12:00:00.000"},
      {"3000000", kInt, kDateTime, "Arithmetic overflow error converting expression to data type datetime."},
      {"1900-01-02 12:00:00.000", kDateTime, kInt, "2"},
      {"1", kInt, kDate, "Explicit conversion from data type int to date is not allowed."},
      {"2024-01-05", kDate, kInt, "Explicit conversion from data type date to int is not allowed."},
  });
  Check({{"2024-01-05", kDate, kInt, "Operand type clash: date is incompatible with int"},
         {"2024-01-05 00:00:00.000", kDateTime, kInt,
          "Implicit conversion from data type datetime to int is not allowed. Use the CONVERT function to run this "
          "query."}},
        Purpose::Assign);
  EXPECT_EQ(Result("05/01/2024", kText, kDateTime, Purpose::Cast, 103), "2024-01-05 00:00:00.000");
  EXPECT_EQ(Result("13/01/24", kText, kDate, Purpose::Cast, 3), "2024-01-13");
  EXPECT_EQ(Result("24.01.05", kText, kDate, Purpose::Cast, 2), "2024-01-05");
}

TEST(Convert, TolerantConversionsGiveNull) {
  Check({{"x", kText, kInt, "null"},
         {"256", kInt, TypeOf(TypeKind::TinyInt), "null"},
         {"12", kText, kInt, "12"},
         {"2026-02-30", kText, kDate, "null"},
         {"促销", kText, VarChar(2), "促"},
         {"1", kInt, kDate, "Explicit conversion from data type int to date is not allowed."}},
        Purpose::Tolerant);
}

TEST(Convert, KnowsWhatIsNumeric) {
  for (const char* text : {"1", " -1.5e3 ", "$1,000.50", "￥5", ".5", "1.", "$"})
    EXPECT_TRUE(IsNumberText(text)) << text;
  for (const char* text : {"", " ", "1x", "e5", "inf", "1 2", "一", "1e", "--1"})
    EXPECT_FALSE(IsNumberText(text)) << text;
}

TEST(DataTypes, DeclarationsReadBack) {
  for (const DataType& type :
       {Dec(28, 10), kMoney, kSmallMoney, kInt, kFloat, kReal, kDateTime, kSmallDateTime, kDate, kDateTime2,
        TextType(TypeKind::NVarChar, 255), VarChar(DataType::kMaxLength), TypeOf(TypeKind::Bit)}) {
    EXPECT_EQ(ParseDeclaration(Declaration(type)), type) << Declaration(type);
  }
  EXPECT_EQ(Declaration(Dec(28, 10)), "decimal text(28,10)");
  EXPECT_EQ(Declaration(kDateTime2), "datetime2(7)");
  EXPECT_EQ(Declaration(VarChar(DataType::kMaxLength)), "varchar(-1)");
  EXPECT_EQ(ParseDeclaration("blob"), std::nullopt);
}

}  // namespace
}  // namespace rebate::tsql
