#include "com/values.h"

#include "tests/com/com_kit.h"

namespace rebate::com {
namespace {

TEST(Values, CrossWithTheirTypes) {
  const std::pair<Variant, VARTYPE> cases[] = {
      {Variant(), VT_EMPTY},
      {Variant::Null(), VT_NULL},
      {Variant(std::int16_t{-7}), VT_I2},
      {Variant(Long{-2147483647}), VT_I4},
      {Variant(0.5f), VT_R4},
      {Variant(0.1), VT_R8},
      {Variant::Currency(-125001), VT_CY},
      {Variant::Date(46348.25), VT_DATE},
      {Variant("返利 😀 it's"), VT_BSTR},
      {Variant(""), VT_BSTR},
      {Variant(true), VT_BOOL},
      {Variant(false), VT_BOOL},
      {Variant::Decimal("-0.25"), VT_DECIMAL},
      {Variant::Decimal("7922816251426433759354395033.5"), VT_DECIMAL},
      {Variant::Array({1, "a", Variant::Null()}), VT_ARRAY | VT_VARIANT},
      {ObjectRef(), VT_DISPATCH},
  };
  for (const auto& [value, type] : cases) {
    OwnVariant crossed;
    ToClient(value, crossed);
    EXPECT_EQ(crossed.vt, type);
    EXPECT_TRUE(FromClient(crossed) == value) << "type " << type;
  }
}

TEST(Values, KeepTheDigitsThatTheSystemsDecimalCannotHold) {
  const Text digits = "123456789012345678901234567890.12345678";
  OwnVariant crossed;
  ToClient(Variant::Decimal(digits), crossed);
  ASSERT_EQ(crossed.vt, VT_BSTR);
  EXPECT_EQ(FromBstr(crossed.bstrVal), digits);
}

TEST(Values, TakeEveryWidthOfInteger) {
  const auto number = [](VARTYPE type, LONGLONG bits) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    value.llVal = bits;
    return FromClient(value);
  };
  EXPECT_EQ(number(VT_UI1, 200), Variant(200));
  EXPECT_EQ(number(VT_I1, -3), Variant(-3));
  EXPECT_EQ(number(VT_UI2, 65535), Variant(65535));
  EXPECT_EQ(number(VT_UI4, 7), Variant(7));
  EXPECT_EQ(number(VT_UI4, 0xFFFFFFFF), Variant::Decimal("4294967295"));
  EXPECT_EQ(number(VT_I8, -5), Variant(-5));
  EXPECT_EQ(number(VT_I8, 9007199254740993), Variant::Decimal("9007199254740993"));
  EXPECT_EQ(number(VT_UI8, -1), Variant::Decimal("18446744073709551615"));
  EXPECT_TRUE(number(VT_ERROR, DISP_E_PARAMNOTFOUND).IsMissing());
  EXPECT_THROW(number(VT_ERROR, 5), Error);
  EXPECT_THROW(number(VT_RECORD, 0), Error);
}

TEST(Values, ComeOutOfArraysOfAnyTypeAndBound) {
  SAFEARRAYBOUND bound{2, 5};
  SAFEARRAY* texts = SafeArrayCreate(VT_BSTR, 1, &bound);
  for (LONG i = 5; i <= 6; ++i) SafeArrayPutElement(texts, &i, OwnBstr(i == 5 ? "first" : "第二").get());
  OwnVariant array;
  array.vt = VT_ARRAY | VT_BSTR;
  array.parray = texts;
  EXPECT_TRUE(FromClient(array) == Variant::Array({"first", "第二"}));
  VARIANT by_ref;
  by_ref.vt = VT_BYREF | VT_ARRAY | VT_BSTR;
  by_ref.pparray = &texts;
  EXPECT_TRUE(FromClient(by_ref) == Variant::Array({"first", "第二"}));
  SAFEARRAYBOUND square[] = {{2, 0}, {2, 0}};
  OwnVariant table;
  table.parray = SafeArrayCreate(VT_VARIANT, 2, square);
  table.vt = VT_ARRAY | VT_VARIANT;
  EXPECT_THROW(FromClient(table), Error);
}

TEST(Values, AreWrittenBackIntoAnyVariable) {
  OwnVariant variable;
  ToClient("old", variable);
  VARIANT by_ref;
  by_ref.vt = VT_BYREF | VT_VARIANT;
  by_ref.pvarVal = &variable;
  WriteBack("new", by_ref);
  EXPECT_EQ(FromClient(variable), Variant("new"));

  SHORT small = 1;
  by_ref.vt = VT_BYREF | VT_I2;
  by_ref.piVal = &small;
  WriteBack(2041, by_ref);
  EXPECT_EQ(small, 2041);
  EXPECT_THROW(WriteBack(100000, by_ref), Error);
  EXPECT_EQ(small, 2041);

  OwnBstr text("12.5");
  by_ref.vt = VT_BYREF | VT_BSTR;
  by_ref.pbstrVal = text.Receive();
  EXPECT_EQ(FromClient(by_ref), Variant("12.5"));
  WriteBack(0.25, by_ref);
  EXPECT_EQ(FromBstr(text.get()), "0.25");

  DECIMAL decimal{};
  by_ref.vt = VT_BYREF | VT_DECIMAL;
  by_ref.pdecVal = &decimal;
  WriteBack(Variant::Decimal("5.75"), by_ref);
  EXPECT_EQ(FromClient(by_ref), Variant::Decimal("5.75"));
}

}  // namespace
}  // namespace rebate::com
