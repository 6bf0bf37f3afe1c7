#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

#include "platform/values/decimal.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

using Big = boost::multiprecision::cpp_int;

Decimal D(std::string_view text) {
  return Decimal::Parse(text).value();
}

Text TextOf(const std::optional<Decimal>& number) {
  return number ? number->ToText() : "none";
}

const Text kNines(38, '9');

TEST(Decimal, ReadsPlainDigitsAndWritesOneKeyForEqualNumbers) {
  const struct {
    Text text, written, key;
  } cases[] = {
      {"12", "12", "12"},
      {"-.5", "-0.5", "-0.5"},
      {"1.", "1", "1"},
      {"+007.500", "7.500", "7.5"},
      {"-0.00", "0.00", "0"},
      {"200000", "200000", "200000"},
      {"18446744073709551616", "18446744073709551616", "18446744073709551616"},
      {"10000000000000000000.0000000001", "10000000000000000000.0000000001", "10000000000000000000.0000000001"},
      {kNines, kNines, kNines},
      {"-0." + kNines, "-0." + kNines, "-0." + kNines},
      {"0000000000000000000000000000000000000000000001", "1", "1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(D(c.text).ToText(), c.written);
    EXPECT_EQ(D(c.text).ToKey(), c.key);
    EXPECT_EQ(D(c.key).ToKey(), c.key);
  }
  for (const Text& text : {Text(), Text("."), Text("-"), Text("1e2"), Text(" 1"), Text("1,5"), Text("--1"),
                           Text("1.2.3"), kNines + "0", "0." + kNines + "9"}) {
    EXPECT_FALSE(Decimal::Parse(text)) << text;
  }
}

TEST(Decimal, RoundsHalfAwayFromZeroOrCuts) {
  const auto cut = Decimal::Digits::Cut;
  EXPECT_EQ(TextOf(D("2.345").WithScale(2)), "2.35");
  EXPECT_EQ(TextOf(D("-2.345").WithScale(2)), "-2.35");
  EXPECT_EQ(TextOf(D("2.349").WithScale(2, cut)), "2.34");
  EXPECT_EQ(TextOf(D("0.99999999999").WithScale(0, cut)), "0");
  EXPECT_EQ(TextOf(D("-0.4").WithScale(0)), "0");
  EXPECT_EQ(TextOf(D("99999999999999999999.5").WithScale(0)), "100000000000000000000");
  EXPECT_EQ(TextOf(D(kNines).WithScale(1)), "none");
  EXPECT_EQ(TextOf(D("0." + kNines).WithScale(37)), "1." + Text(37, '0'));
  EXPECT_EQ(TextOf(D("1250.75").RoundedTo(-2)), "1300.00");
  EXPECT_EQ(TextOf(D("1250.75").RoundedTo(1, cut)), "1250.70");
  EXPECT_EQ(TextOf(D("49").RoundedTo(-60)), "0");
  EXPECT_EQ(TextOf(D(kNines).RoundedTo(-1)), "none");
  EXPECT_EQ(D("-7.9").ToInteger(), -7);
  EXPECT_EQ(D("-9223372036854775808").ToInteger(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(D("9223372036854775808").ToInteger(), std::nullopt);
  EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::min()).ToText(), "-9223372036854775808");
  EXPECT_EQ(D("0.5").IntegerDigits(), 0);
  EXPECT_EQ(D("10000000000000000000.5").IntegerDigits(), 20);
}

TEST(Decimal, DividesAsTheTypeOfTheQuotientSays) {
  EXPECT_EQ(TextOf(Decimal::Divide(D("1.00"), D("3.00"), 13, Decimal::Digits::Cut)), "0.3333333333333");
  EXPECT_EQ(TextOf(Decimal::Divide(D("-2"), D("3"), 6, Decimal::Digits::Cut)), "-0.666666");
  EXPECT_EQ(TextOf(Decimal::Divide(D("-2"), D("3"), 6, Decimal::Digits::Round)), "-0.666667");
  EXPECT_EQ(TextOf(Decimal::Divide(D(kNines), D("0.1"), 0, Decimal::Digits::Cut)), "none");
  EXPECT_EQ(TextOf(Decimal::Remainder(D("-7.5"), D("2"), 1)), "-1.5");
  EXPECT_EQ(TextOf(Decimal::Multiply(D(kNines), D("10"), 0)), "none");
}

TEST(Decimal, GoesToFloatsAndBackByTheirShortestDigits) {
  for (const double number : {0.1, -2.675, 1e22, 123456789012345680.0, 5e-7, 0.0, 1.0 / 3}) {
    const auto decimal = Decimal::FromDouble(number);
    ASSERT_TRUE(decimal) << number;
    EXPECT_EQ(decimal->ToDouble(), number);
  }
  EXPECT_EQ(TextOf(Decimal::FromDouble(0.1)), "0.1");
  EXPECT_EQ(TextOf(Decimal::FromDouble(1e21)), "1000000000000000000000");
  EXPECT_EQ(Decimal::FromDouble(1e-300)->ToKey(), "0");
  EXPECT_EQ(Decimal::FromDouble(1.5e-38)->ToKey(), "0." + Text(37, '0') + "2");
  for (const double number : {1e38, -1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
    EXPECT_FALSE(Decimal::FromDouble(number)) << number;
  }
}

// Random amounts of up to `digits` digits and a scale of up to 10, beside the same number in units of 10^-10.
class Amounts {
 public:
  struct Amount {
    Decimal decimal;
    Big units;
  };
  Amount Next(int most_digits) {
    const int digits = Pick(0, most_digits);
    const int scale = Pick(0, 10);
    Text text(Pick(0, 1) == 0 ? "-" : "");
    for (int i = 0; i < digits; ++i) text += static_cast<char>('0' + (Pick(0, 3) == 0 ? 0 : Pick(0, 9)));
    text += "0.";
    for (int i = 0; i < scale; ++i) text += static_cast<char>('0' + Pick(0, 9));
    Text padded = text;
    padded.append(static_cast<std::size_t>(10 - scale), '0');
    padded.erase(padded.find('.'), 1);
    const bool negative = padded[0] == '-';
    padded.erase(0, std::min(padded.find_first_of("123456789"), padded.size() - 1));
    const Big units(padded);
    return {D(text), negative ? Big(-units) : units};
  }
  int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }

 private:
  std::mt19937 engine_{20261123};
};

Text ScaledText(const Big& units, int scale) {
  Text digits = Big(abs(units)).str();
  const auto width = static_cast<std::size_t>(scale) + 1;
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  digits.insert(digits.size() - static_cast<std::size_t>(scale), scale > 0 ? "." : "");
  return (units < 0 ? "-" : "") + digits;
}

TEST(Decimal, AgreesWithUnboundedIntegers) {
  Amounts amounts;
  for (int i = 0; i < 20'000; ++i) {
    const auto a = amounts.Next(17);
    const auto b = amounts.Next(i % 2 == 0 ? 17 : 6);
    EXPECT_EQ(TextOf(a.decimal.WithScale(10)), ScaledText(a.units, 10));
    EXPECT_EQ(TextOf(Decimal::Add(a.decimal, b.decimal, 10)), ScaledText(a.units + b.units, 10));
    const auto product = Decimal::Multiply(a.decimal, b.decimal, 20);
    if (product) {
      EXPECT_EQ(product->ToText(), ScaledText(a.units * b.units, 20));
    }
    EXPECT_EQ(product.has_value(), abs(a.units * b.units) < boost::multiprecision::pow(Big(10), 38));
    if (b.units != 0) {
      EXPECT_EQ(TextOf(Decimal::Remainder(a.decimal, b.decimal, 10)), ScaledText(a.units % b.units, 10));
      const Big quotient = a.units * 1000000 / b.units;
      const auto divided = Decimal::Divide(a.decimal, b.decimal, 6, Decimal::Digits::Cut);
      if (abs(quotient) < boost::multiprecision::pow(Big(10), 38)) {
        EXPECT_EQ(TextOf(divided), ScaledText(quotient, 6));
      }
    }
    const int order = a.units < b.units ? -1 : a.units > b.units ? 1 : 0;
    EXPECT_EQ(a.decimal < b.decimal, order < 0);
    EXPECT_EQ(a.decimal == b.decimal, order == 0);
    EXPECT_EQ(CompareKeys(a.decimal.ToKey(), b.decimal.ToKey()), order)
        << a.decimal.ToKey() << ' ' << b.decimal.ToKey();
    EXPECT_EQ(D(a.decimal.ToKey()), a.decimal);
    EXPECT_EQ(a.decimal.ToKey() == b.decimal.ToKey(), order == 0);
    EXPECT_EQ(a.decimal.Trimmed().ToText(), a.decimal.ToKey());
  }
}

TEST(NumberText, WritesFloatsAsEachWorldDoes) {
  const struct {
    double number;
    Text automation, server, scientific;
  } cases[] = {
      {1234567, "1234567", "1.23457e+006", "1.2345670e+006"},
      {123456.789, "123456.789", "123457", "1.2345679e+005"},
      {0.1, "0.1", "0.1", "1.0000000e-001"},
      {0.00001, "0.00001", "1e-005", "1.0000000e-005"},
      {-1e100, "-1E+100", "-1e+100", "-1.0000000e+100"},
      {0, "0", "0", "0.0000000e+000"},
      {999999.5, "999999.5", "1e+006", "9.9999950e+005"},
      {1e15, "1E+15", "1e+015", "1.0000000e+015"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(NumberText(c.number), c.automation);
    EXPECT_EQ(ServerFloatText(c.number, 6), c.server);
    EXPECT_EQ(ScientificText(c.number, 8), c.scientific);
  }
  EXPECT_EQ(NumberText(static_cast<double>(16777217.0f), 7), "16777220");
  EXPECT_EQ(ShortestText(3.0), "3.0");
  EXPECT_EQ(ShortestText(0.1f), "0.1");
  EXPECT_EQ(FixedText(2.675, 2), "2.68");
  EXPECT_EQ(FixedText(1e40, 1).substr(0, 3), "100");
}

TEST(NumberText, ReadsNumbersWholeOrNotAtAll) {
  EXPECT_EQ(ReadFloat("+1.e2").number, 100);
  EXPECT_EQ(ReadFloat("-.5").number, -0.5);
  EXPECT_EQ(ReadFloat("1e-400").outcome, FloatReading::Outcome::Ok);
  EXPECT_EQ(ReadFloat("1e400").outcome, FloatReading::Outcome::Overflow);
  for (const char* text : {"", "+", "+-1", "1x", "inf", "nan", "0x10", "1,5", " 1", "e5", "."}) {
    EXPECT_EQ(ReadFloat(text).outcome, FloatReading::Outcome::NoNumber) << text;
    EXPECT_EQ(ReadInteger(text).outcome, FloatReading::Outcome::NoNumber) << text;
  }
  EXPECT_EQ(WholeNumber<std::int16_t>("-32768"), -32768);
  for (const char* text : {"", "-", "+1", " 1", "1 ", "1.", "32768"})
    EXPECT_FALSE(WholeNumber<std::int16_t>(text)) << text;
  EXPECT_EQ(ReadInteger("9223372036854775808").outcome, FloatReading::Outcome::Overflow);
  EXPECT_EQ(PlainDigits("-1.25e3"), "-1250");
  EXPECT_EQ(PlainDigits("12345678901234567890.123456789e-2"), "123456789012345678.90123456789");
  EXPECT_EQ(PlainDigits("0e999999999999"), "0");
  EXPECT_EQ(PlainDigits("1e999999999"), std::nullopt);
  EXPECT_EQ(PlainDigits("1e"), std::nullopt);
}

TEST(NumberText, ScalesCurrencyInOneWay) {
  using Limits = std::numeric_limits<std::int64_t>;
  const struct {
    const char* amount;
    std::optional<std::int64_t> units;
  } cases[] = {{"12.5", 125000},
               {"-.00005", -1},
               {"0.00004999", 0},
               {"1.", 10000},
               {"922337203685477.5807", Limits::max()},
               {"922337203685477.58075", std::nullopt},
               {"-922337203685477.5808", Limits::min()},
               {"922337203685478", std::nullopt},
               {"", std::nullopt},
               {"1e3", std::nullopt}};
  for (const auto& c : cases) EXPECT_EQ(CurrencyUnits(c.amount), c.units) << c.amount;
  EXPECT_EQ(CurrencyText(Limits::min()), "-922337203685477.5808");
  EXPECT_EQ(CurrencyText(-1), "-0.0001");
  EXPECT_EQ(CurrencyText(30000), "3");
}

// A host may have set any locale; this one writes a comma for the point.
TEST(NumberText, KnowsNoLocale) {
  const Text former = std::setlocale(LC_ALL, nullptr);
  const char* found = nullptr;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
    if (found == nullptr) found = std::setlocale(LC_ALL, name);
  }
  if (found == nullptr) GTEST_SKIP() << "no locale with a decimal comma";
  EXPECT_EQ(NumberText(1.5), "1.5");
  EXPECT_EQ(ReadFloat("1.5").number, 1.5);
  EXPECT_EQ(ServerFloatText(1.5, 6), "1.5");
  EXPECT_EQ(FixedText(1.25, 1), "1.3");
  EXPECT_EQ(ShortestText(1.5), "1.5");
  std::setlocale(LC_ALL, former.c_str());
}

}  // namespace
}  // namespace rebate
