#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "platform/database/row_set.h"
#include "service/row_conversion.h"

namespace rebate {
namespace {

Ref<RowSet> Rows(std::vector<Text> names, std::vector<Variant> cells) {
  Ref<RowSet> rows = New<RowSet>(std::move(names));
  for (Variant& cell : cells) rows->Add(std::move(cell));
  return rows;
}

TEST(RowConversion, TurnsEveryValueIntoTrimmedText) {
  const RecordsetRef rows = OpenRecordset(
      Rows({"a", "b", "c", "d", "e"}, {Variant::Null(), "  blanks  ", 0, Variant::Decimal("12.50"), true}));
  const Ref<Dictionary> row = RowToDictionary(rows);
  EXPECT_EQ(row->Value("a"), Variant(""));
  EXPECT_EQ(row->Value("b"), Variant("blanks"));
  EXPECT_EQ(row->Value("c"), Variant("0"));
  EXPECT_EQ(row->Value("d"), Variant("12.5"));
  EXPECT_EQ(row->Value("e"), Variant("True"));
  EXPECT_FALSE(rows->Eof());
}

TEST(RowConversion, LetsTheLaterOfTwoColumnsOfOneNameStand) {
  const Ref<Dictionary> row = RowToDictionary(OpenRecordset(Rows({"a", "b", "a"}, {1, 2, 3})));
  EXPECT_EQ(row->Count(), 2);
  EXPECT_EQ(row->Key(1), "a");
  EXPECT_EQ(row->Value("a"), Variant("3"));
}

TEST(RowConversion, EndsAtTheEnd) {
  const RecordsetRef rows = OpenRecordset(Rows({"a"}, {1, 2}));
  rows->MoveNext();
  EXPECT_EQ(RecordsetToVector(rows)->Size(), 1);
  EXPECT_TRUE(rows->Eof());
  EXPECT_FALSE(RowToDictionary(rows));
  EXPECT_EQ(RecordsetToVector(rows)->Size(), 0);
}

TEST(RowConversion, KeepsTheLengthWhereARowDoesNotConvert) {
  const RecordsetRef rows = OpenRecordset(Rows({"a"}, {1, Variant::Array({}), 3}));
  const Ref<Vector> converted = RecordsetToVector(rows);
  ASSERT_EQ(converted->Size(), 3);
  EXPECT_FALSE(converted->Item(2).object());
  EXPECT_TRUE(converted->Item(3).object());
  rows->Close();
  EXPECT_FALSE(RecordsetToVector(rows));
  EXPECT_FALSE(RowToDictionary(rows));
}

TEST(ClientCursor, ShowsTheRowsThatItsFilterMatches) {
  const RecordsetRef rows = OpenRecordset(Rows({"FRowID", "FName"}, {1, "a", 2, "b", Variant::Null(), "c", 2, "d'e"}));
  const auto shown = [&](std::string_view filter) {
    rows->SetFilter(filter);
    Text names;
    for (; !rows->Eof(); rows->MoveNext()) names += ToText(rows->FieldValue("fname")) + " ";
    return names;
  };
  EXPECT_EQ(shown("FRowID=2"), "b d'e ");
  EXPECT_EQ(shown("FROWID = 9"), "");
  EXPECT_EQ(shown("FRowID='2'"), "b d'e ");
  EXPECT_EQ(shown("FName='D''e'"), "d'e ");
  EXPECT_EQ(shown(""), "a b c d'e ");
  for (const char* wrong : {"FRowID", "FRowID=", "FNone=1", "FRowID>1"}) EXPECT_THROW(rows->SetFilter(wrong), Error);
}

TEST(ClientCursor, RefusesWhatIsNotThere) {
  const RecordsetRef rows = OpenRecordset(Rows({"a"}, {}));
  EXPECT_TRUE(rows->Eof());
  EXPECT_THROW(rows->FieldValue("a"), Error);
  EXPECT_THROW(rows->MoveNext(), Error);
  EXPECT_THROW(rows->FieldIndex("b"), Error);
  rows->Close();
  EXPECT_THROW(rows->Eof(), Error);
}

TEST(ClientCursor, AnswersByNameAsItsClientsCallIt) {
  const RecordsetRef rows = OpenRecordset(Rows({"FRowID", "FName"}, {1, "a", 2, "b", 2, "c"}));
  const auto get = [](const Variant& object, std::string_view member, std::vector<Variant> arguments = {}) {
    return object.object()->Invoke(member, arguments);
  };
  const Variant rs(rows);
  EXPECT_EQ(get(rs, "RecordCount"), Variant(3));
  EXPECT_EQ(get(get(rs, "Fields"), "Count"), Variant(2));
  const Variant name = get(rs, "fields", {"fname"});  // handed on to Item of Fields
  EXPECT_EQ(get(name, "Name"), Variant("FName"));
  EXPECT_EQ(get(get(rs, "", {0}), ""), Variant(1));
  Variant filter[] = {"FRowID=2"};
  rows->Put("Filter", filter);
  EXPECT_EQ(get(rs, "Filter"), Variant("FRowID=2"));
  EXPECT_EQ(get(rs, "RecordCount"), Variant(2));
  EXPECT_EQ(get(name, "Value"), Variant("b"));  // of the row on which the cursor stands by now
  get(rs, "MoveNext");
  EXPECT_EQ(get(name, ""), Variant("c"));
  filter[0] = "FRowID=9";
  rows->Put("Filter", filter);
  EXPECT_EQ(get(rs, "BOF"), Variant(true));
  EXPECT_EQ(get(rs, "EOF"), Variant(true));
  EXPECT_THROW(get(rs, "Fields", {"none"}), Error);
  EXPECT_THROW(get(rs, "Fields", {2}), Error);
  get(rs, "Close");
  EXPECT_THROW(get(rs, "EOF"), Error);
}

}  // namespace
}  // namespace rebate
