#include <gtest/gtest.h>

#include <clocale>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/row_set.h"

namespace rebate {
namespace {

Text RoundTrip(const Text& json) {
  return JsonLine(ToJson(FromJson(ParseJson(json), "v")));
}

// The error of reading `json` as the value `v`, as "number description".
Text ReadingError(const Text& json) {
  try {
    FromJson(ParseJson(json), "v");
  } catch (const Error& error) {
    return std::to_string(error.number) + " " + error.description;
  }
  return "no error";
}

TEST(ClientJson, ValuesComeBackAsTheyWent) {
  const struct {
    Text json;
    VariantType type;
  } cases[] = {
      {R"("返利 \"A\"\n")", VariantType::Text},
      {R"("")", VariantType::Text},
      {"2147483647", VariantType::Long},
      {"-2147483648", VariantType::Long},
      {"3.0", VariantType::Double},
      {"0.1", VariantType::Double},
      {"1e+300", VariantType::Double},
      {"true", VariantType::Boolean},
      {"null", VariantType::Object},
      {R"({"b":1,"a":{"z":[],"y":[1,[2.5,null]]}})", VariantType::Object},
      {R"({"$":"i2","value":-32768})", VariantType::Short},
      {R"({"$":"r4","value":0.1})", VariantType::Single},
      {R"({"$":"currency","value":"-12.3456"})", VariantType::Currency},
      {R"({"$":"currency","value":"922337203685477"})", VariantType::Currency},
      {R"({"$":"decimal","value":"-1234567890123456789.0123456789"})", VariantType::Decimal},
      {R"({"$":"date","value":"2026-01-02 03:04:05"})", VariantType::Date},
      {R"({"$":"date","value":"1899-12-30"})", VariantType::Date},
      {R"({"$":"empty"})", VariantType::Empty},
      {R"({"$":"null"})", VariantType::Null},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FromJson(ParseJson(c.json), "v").type(), c.type) << c.json;
    EXPECT_EQ(RoundTrip(c.json), c.json);
  }
}

TEST(ClientJson, NumbersServeAsCurrencyAndDecimal) {
  EXPECT_EQ(RoundTrip(R"({"$":"currency","value":0.00005})"), R"({"$":"currency","value":"0.0001"})");
  EXPECT_EQ(RoundTrip(R"({"$":"currency","value":-7})"), R"({"$":"currency","value":"-7"})");
  EXPECT_EQ(RoundTrip(R"({"$":"decimal","value":1e21})"), R"({"$":"decimal","value":"1000000000000000000000"})");
  EXPECT_EQ(RoundTrip(R"({"$":"decimal","value":9007199254740993})"), R"({"$":"decimal","value":"9007199254740993"})");
}

// No float stands between the digits as they are written and the amount, whichever key comes first.
TEST(ClientJson, ExactNumbersKeepAllTheirDigits) {
  const Text digits = "1234567890123456789012345678.0123456789";
  const Text tagged = R"({"$":"decimal","value":")" + digits + "\"}";
  EXPECT_EQ(RoundTrip(R"({"$":"decimal","value":)" + digits + "}"), tagged);
  EXPECT_EQ(RoundTrip(R"({"value":)" + digits + R"(,"$":"decimal"})"), tagged);
  EXPECT_EQ(RoundTrip(R"({"$":"decimal","value":-12345678901234567890123456789012345678})"),
            R"({"$":"decimal","value":"-12345678901234567890123456789012345678"})");
  EXPECT_EQ(RoundTrip(R"({"$":"currency","value":922337203685477.5807})"),
            R"({"$":"currency","value":"922337203685477.5807"})");
  EXPECT_EQ(RoundTrip(R"({"value":2.5,"a":{"value":1e3}})"), R"({"value":2.5,"a":{"value":1000.0}})");
  EXPECT_EQ(RoundTrip(R"({"value":1.5,"value":null})"), R"({"value":null})");
  EXPECT_EQ(ReadingError(R"({"value":18446744073709551616})"), "6 The integer 18446744073709551616 is out of range");
}

// A host may have set any locale; this one writes a comma for the point.
TEST(ClientJson, ReadsFloatsInAnyLocale) {
  const Text former = std::setlocale(LC_ALL, nullptr);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no locale with a decimal comma";
  EXPECT_EQ(RoundTrip("[1.5,-2.5e-3]"), "[1.5,-0.0025]");
  std::setlocale(LC_ALL, former.c_str());
}

TEST(ClientJson, WhatIsNoValueIsRefusedWithItsPlace) {
  const struct {
    Text json;
    Text start;
  } cases[] = {
      {"2147483648", "6 v: the integer 2147483648 is outside 32 bits"},
      {R"({"rows":[1,{"id":-2147483649}]})", "6 v.rows[2].id: the integer -2147483649"},
      {"18446744073709551616", "6 The integer 18446744073709551616 is out of range"},
      {R"({"$":"i2","value":32768})", "6 v: the number is outside the kind i2"},
      {R"({"$":"i2","value":1.5})", "13 v: an integer is due"},
      {R"({"$":"r4","value":1e39})", "6 v: the number is outside the kind r4"},
      {R"({"$":"currency","value":"922337203685478"})", "6 v: the number is outside the kind currency"},
      {R"({"$":"decimal","value":"1e5"})", "13 v: a number in plain digits is due"},
      {R"({"$":"date","value":"2026-13-01"})", "13 v: a date such as"},
      {R"([{"$":"recordset","columns":[],"rows":[]}])", "13 v[1]: the kind \"recordset\" is unknown"},
      {R"({"$":7})", "13 v: the kind 7 is unknown"},
      {R"({"$":"decimal"})", "13 v: \"value\" is missing"},
      {R"({"$":"null","value":1})", "13 v: unexpected \"value\""},
      {R"({"$":"decimal","value":"1","x":1})", "13 v: unexpected \"x\""},
      {"{\"a\":}", "5 parse error at line 1"},
      {"\"\xFF\"", "5 parse error at line 1"},
      {Text(100000, '['), "5 Nested too deeply"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ReadingError(c.json).substr(0, c.start.size()), c.start) << c.json.substr(0, 80);
}

TEST(ClientJson, AnArrayIsAVectorButForAnArgumentOfAnyKind) {
  const Json json = ParseJson(R"(["a",["b"]])");
  const Variant any = ArgumentFromJson(json, {"SQLBatch", {DeclaredType::Kind::Value}});
  ASSERT_TRUE(any.IsArray());
  EXPECT_EQ(any.array()[0], Variant("a"));
  EXPECT_EQ(JsonLine(ToJson(any)), R"(["a",["b"]])");
  EXPECT_TRUE(ObjectAs<Vector>(ArgumentFromJson(json, {"vecData", {DeclaredType::Kind::Object, "Vector"}})));
}

TEST(ClientJson, RecordsetGivesTheRowsThatItsFilterShows) {
  auto rows = New<RowSet>(std::vector<Text>{"FRowID", "FRate", "FName"});
  const Variant cells[] = {1, Variant::Decimal("12.50"), "a", 2, Variant::Null(), "b", 1, Variant::Date(0.5), 2.0};
  for (const Variant& cell : cells) rows->Add(cell);
  const RecordsetRef recordset = OpenRecordset(rows);
  recordset->MoveNext();
  recordset->SetFilter("FRowID=1");
  while (!recordset->Eof()) recordset->MoveNext();
  EXPECT_EQ(JsonLine(ToJson(recordset)),
            R"({"$":"recordset","columns":["FRowID","FRate","FName"],)"
            R"("rows":[[1,{"$":"decimal","value":"12.5"},"a"],[1,{"$":"date","value":"1899-12-30 12:00:00"},2.0]]})");
  EXPECT_EQ(recordset->Filter(), "FRowID=1");
}

TEST(ClientJson, BytesThatAreNoUtf8AreReplaced) {
  auto dictionary = New<Dictionary>();
  dictionary->SetValue("k\xC3", "\xE8\xBF");
  EXPECT_EQ(JsonLine(ToJson(dictionary)), "{\"k\uFFFD\":\"\uFFFD\"}");
}

}  // namespace
}  // namespace rebate
