#include "client/scheme_view.h"

#include <ostream>

#include "client/code_words.h"
#include "client/rate_grid.h"
#include "client/row_tables.h"
#include "client/sections.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

// The row of the scheme's rebate type, null where the account no longer offers it.
Ref<Dictionary> TypeRowOf(const Dictionary& scheme) {
  const Text type = CellText(*ObjectAs<Dictionary>(scheme.Value("SchemeMain")), "FRebateType");
  const auto types = ObjectAs<Vector>(scheme.GetValue("SchemeConst"));
  for (Long i = 1; types && i <= types->Size(); ++i) {
    const auto row = ObjectAs<Dictionary>(types->Item(i));
    if (CellText(*row, "FRebateType") == type) return row;
  }
  return nullptr;
}

void PrintHead(const Dictionary& scheme, std::ostream& out) {
  const auto head = ObjectAs<Dictionary>(scheme.Value("SchemeMain"));
  const Ref<Dictionary> type = TypeRowOf(scheme);
  const Text type_words = type ? "  " + CellText(*type, "FTypeName") : Text();
  PrintFields(
      {
          {"Scheme", CellText(*head, "FSchemeID") + "  " + CellText(*head, "FSchemeName")},
          {"Type", CellText(*head, "FRebateType") + type_words},
          {"Enabled", CellText(*head, "FEnable") == "1" ? "yes" : "no"},
          {"Checker", CellText(*head, "FCheckerName")},
          {"Modified", CellText(*head, "FModifyDate")},
          {"Note", CellText(*head, "FNote")},
      },
      out);
}

Table RateTable(Recordset& rates, const Vector& ranges) {
  RateGrid grid({{"Row", true}});
  for (Long i = 1; i <= ranges.Size(); ++i) {
    const auto range = ObjectAs<Dictionary>(ranges.Item(i));
    grid.AddRange(CellText(*range, "FIndex"),
                  RangeHeading(CellText(*range, "FLowerLimit"), CellText(*range, "FUpperLimit")));
  }
  for (rates.MoveFirst(); !rates.Eof(); rates.MoveNext()) {
    grid.BeginLine({CellText(rates.FieldValue("FRowID"))});
    grid.Put(CellText(rates.FieldValue("FIndex")), CellText(rates.FieldValue("FRebateRate")));
  }
  return grid.ToTable();
}

}  // namespace

void PrintScheme(const Dictionary& scheme, std::ostream& out, std::size_t width) {
  const std::vector<RowColumn> range_columns = {
      {"Range", "FIndex", true}, {"From", "FLowerLimit", true}, {"To", "FUpperLimit", true}};
  const std::vector<RowColumn> organisation_columns = {
      {"Row", "FRowID", true}, {"Class", "FItemClassID", false, 2, ItemClassText},
      {"ID", "FItemID", true}, {"Number", "FNumber"},
      {"Name", "FName"},       {"Shown as", "FShowName", false, 1}};
  const std::vector<RowColumn> goods_columns = {{"Row", "FRowID", true},
                                                {"ID", "FItemID", true},
                                                {"Number", "FNumber"},
                                                {"Name", "FName"},
                                                {"Model", "FModel", false, 2},
                                                {"Unit", "FUnitName"},
                                                {"Shown as", "FShowName", false, 1}};
  const std::vector<RowColumn> check_columns = {
      {"Row", "FRowID", true}, {"Class", "FItemClassID", false, 0, ItemClassText}, {"ID", "FItemID", true}};
  const auto ranges = ObjectAs<Vector>(scheme.Value("AllRanges"));
  const auto recordset = [&](std::string_view key) { return ObjectAs<Recordset>(scheme.Value(key)); };

  PrintHead(scheme, out);
  PrintSection("Amount ranges", RowTable(range_columns, *ranges), out, width);
  PrintSection("Organisations (ID 0: the whole class)", RowTable(organisation_columns, *recordset("AllOrgsRS")), out,
               width);
  PrintSection("Goods", RowTable(goods_columns, *recordset("AllItemsRS")), out, width);
  const Ref<Dictionary> type = TypeRowOf(scheme);
  PrintSection(WithUnit("Rates by row and range", type ? RateUnit(*type) : Text()),
               RateTable(*recordset("AllRulesRS"), *ranges), out, width);
  PrintSection("Check items", RowTable(check_columns, *recordset("AllChecksRS")), out, width);
}

}  // namespace rebate
