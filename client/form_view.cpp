#include "client/form_view.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>
#include <tuple>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/code_words.h"
#include "client/rate_grid.h"
#include "client/row_tables.h"
#include "client/scheme_lookup.h"
#include "client/sections.h"
#include "platform/automation/conversion.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

// Where the by-ref arguments of the operation stand.
enum { kName = 1, kType, kMode, kOrganisations, kRanges, kRows, kNote };

Text TextOf(const Json& row, const char* key) {
  return row.contains(key) ? ToText(FromJson(row[key], key)) : Text();
}

// Rows as they can be saved again: those of one item or organisation stand together, which a save takes for one
// selection, and an id that isn't there is left out. The account gives them in any order.
Json RowsOf(const Variant& rows) {
  Json list = ToJson(rows);
  const auto place = [](const Json& row) {
    return std::tuple(TextOf(row, "FItemID"), TextOf(row, "FOrgID"), TextOf(row, "FUnitID"),
                      TextOf(row, "FCheckItemID"), LeadingNumber(TextOf(row, "FRebateCount")));
  };
  std::stable_sort(list.begin(), list.end(), [&](const Json& a, const Json& b) { return place(a) < place(b); });
  for (Json& row : list) {
    for (const char* id : {"FItemID", "FOrgID", "FUnitID"}) {
      if (row.contains(id) && row[id] == "") row.erase(id);
    }
  }
  return list;
}

Table RangeTable(const Json& form) {
  Table table({{"Range", true}, {"From", true}, {"To", true}});
  Long position = 0;
  for (const Json& range : form["vecRangeData"]) {
    table.Add({std::to_string(++position), TextOf(range, "FLower"), TextOf(range, "FUpper")});
  }
  return table;
}

Table RateTable(const Json& form) {
  RateGrid grid({{"Goods"}, {"Organisation"}, {"Unit"}, {"Check items"}});
  Long position = 0;
  for (const Json& range : form["vecRangeData"]) {
    grid.AddRange(std::to_string(++position), RangeHeading(TextOf(range, "FLower"), TextOf(range, "FUpper")));
  }
  for (const Json& row : form["vecSchemeData"]) {
    const auto id = [&](const char* key) { return TextOf(row, key) == "0" ? Text() : TextOf(row, key); };
    grid.BeginLine({id("FItemID"), id("FOrgID"), id("FUnitID"), TextOf(row, "FCheckItemID")});
    grid.Put(TextOf(row, "FRebateCount"), TextOf(row, "FRebateRate"));
  }
  return grid.ToTable();
}

}  // namespace

Json LoadForm(Account& account, Long id) {
  std::vector<Variant> view = {id, "", 0, 0, "", Ref<Vector>(), Ref<Vector>(), ""};
  const bool found = ToBoolean(account.CallByRef("ViewSchemeData", view));
  if (!found && account.refusal()) account.ThrowFailure({});
  const std::optional<SchemeHead> head = FindScheme(account, id);
  if (!found || !head || !head->is_form) {
    const Text name = "Scheme " + std::to_string(id);
    throw Error(error_number::kInvalidCall, "rebate",
                name + (head ? " was not saved as a form; `rebate show` shows it" : " does not exist"));
  }
  const Long mode = static_cast<Long>(LeadingNumber(CellText(*head->row, "FRebateMode")));
  return {{"SchemeID", id},
          {"SchemeName", ToJson(view[kName])},
          {"lRebateType", ToJson(view[kType])},
          {"lRebateMode", mode},
          {"sOrg", CellText(*head->row, "FRebateCor")},
          {"vecRangeData", ToJson(view[kRanges])},
          {"vecSchemeData", RowsOf(view[kRows])},
          {"Note", ToJson(view[kNote])}};
}

void PrintForm(const Json& form, bool enabled, const Text& unit, std::ostream& out, std::size_t width) {
  PrintFields({{"Scheme", TextOf(form, "SchemeID") + "  " + TextOf(form, "SchemeName")},
               {"Type", TextOf(form, "lRebateType")},
               {"Mode", TextOf(form, "lRebateMode")},
               {"Enabled", enabled ? "yes" : "no"},
               {"Organisations", TextOf(form, "sOrg")},
               {"Note", TextOf(form, "Note")}},
              out);
  PrintSection("Amount ranges", RangeTable(form), out, width);
  PrintSection(WithUnit("Rates by range", unit), RateTable(form), out, width);
}

}  // namespace rebate
