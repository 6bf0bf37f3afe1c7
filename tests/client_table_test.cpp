#include <gtest/gtest.h>

#include <sstream>

#include "client/display_width.h"
#include "client/result_output.h"
#include "client/table.h"
#include "platform/database/row_set.h"

namespace rebate {
namespace {

TEST(ClientTable, WidthIsThatOfATerminal) {
  const struct {
    Text text;
    std::size_t width;
  } cases[] = {{"", 0},           {"abc", 3},    {"返利A", 5}, {"（全角）", 8}, {"e\u0301", 1},
               {"\U0001F600", 2}, {"한국어", 6}, {"é…", 2},    {"\xFF\xE8", 2}};
  for (const auto& c : cases) EXPECT_EQ(DisplayWidth(c.text), c.width) << c.text;
}

TEST(ClientTable, ShorteningNeverCutsACharacterNorExceedsTheWidth) {
  EXPECT_EQ(FitToWidth("返利方案", 8), "返利方案");
  EXPECT_EQ(FitToWidth("返利方案", 7), "返利方…");
  EXPECT_EQ(FitToWidth("返利方案", 6), "返利…");
  EXPECT_EQ(FitToWidth("返利", 1), "…");
  EXPECT_EQ(FitToWidth("abc", 0), "");
}

Text Printed(const Table& table, std::size_t width) {
  std::ostringstream out;
  table.Print(out, width);
  return out.str();
}

TEST(ClientTable, ColumnsLineUp) {
  Table table({{"Name"}, {"Amount", true}, {"Note"}});
  table.Add({"华东供应商", "5", "a\nb"});
  table.Add({"x", "12.5", ""});
  EXPECT_EQ(Printed(table, 0),
            "Name        Amount  Note\n"
            "----------  ------  ----\n"
            "华东供应商     5    a b\n"
            "x             12.5\n");
}

TEST(ClientTable, OnATerminalTextsGiveWayThenSpareColumnsThenTheTableTurns) {
  Table table({{"ID", true}, {"Organisations", false, 1}, {"Note", false, 2}});
  table.Add({"1", "S.01_华东,S.02_华南,S.03_华北", "n"});
  EXPECT_EQ(Printed(table, 29),
            "ID  Organisations        Note\n"
            "--  -------------------  ----\n"
            " 1  S.01_华东,S.02_华…   n\n");
  EXPECT_EQ(Printed(table, 22),
            "ID  Organisations\n"
            "--  ------------------\n"
            " 1  S.01_华东,S.02_华…\n"
            "(too narrow for: Note)\n");
  EXPECT_NE(Printed(table, 0).find("华北"), Text::npos);

  Table grid({{"Number"}, {"0 – 10000", true}, {"10000 – 20000", true}});
  grid.Add({"S001", "1", "2.25"});
  grid.Add({"S002", "", "3"});
  EXPECT_EQ(Printed(grid, 30),
            "Number         S001\n"
            "0 – 10000      1\n"
            "10000 – 20000  2.25\n"
            "\n"
            "Number         S002\n"
            "0 – 10000\n"
            "10000 – 20000  3\n");
}

RecordsetRef SomeRows() {
  auto rows = New<RowSet>(std::vector<Text>{"n\"1", "名"});
  for (const Variant& cell : std::initializer_list<Variant>{Variant::Decimal("12345678901234567890.5"), "返\"利", 7,
                                                            Variant::Null(), 0.5, Variant::Date(46024.25)}) {
    rows->Add(cell);
  }
  return OpenRecordset(rows);
}

TEST(ClientTable, JsonRowsKeepNumbersWhole) {
  std::ostringstream out;
  PrintRows(*SomeRows(), RowForm::Json, out, 0);
  EXPECT_EQ(out.str(),
            "{\"n\\\"1\":12345678901234567890.5,\"名\":\"返\\\"利\"}\n"
            "{\"n\\\"1\":7,\"名\":null}\n"
            "{\"n\\\"1\":0.5,\"名\":\"2026-01-02 06:00:00\"}\n");
}

TEST(ClientTable, ResultsShowNullAndCountTheirRows) {
  std::ostringstream out;
  PrintRows(*SomeRows(), RowForm::Table, out, 0);
  EXPECT_NE(out.str().find("                   7    NULL\n"), Text::npos) << out.str();
  EXPECT_TRUE(out.str().ends_with("(3 rows)\n")) << out.str();
}

}  // namespace
}  // namespace rebate
