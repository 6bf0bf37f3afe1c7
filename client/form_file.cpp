#include "client/form_file.h"

#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr KeyRule kRange[] = {{"FLower", Shape::Amount, "where the range begins"},
                              {"FUpper", Shape::Amount, "where it ends"}};
constexpr KeyRule kRow[] = {
    {"FItemID", Shape::ItemList, "goods that are counted together, in types by goods", kOptional},
    {"FOrgID", Shape::Item, "organisation, in types by total", kOptional},
    {"FRebateCount", Shape::Id, "position of the range, counted from 1"},
    {"FRebateRate", Shape::Amount, "rate, in per cent or in the unit of the type"},
    {"FUnitID", Shape::Item, "unit in which the goods are counted", kOptional},
    {"FCheckItemID", Shape::IdList, "check items", kOptional}};
constexpr KeyRule kForm[] = {
    {"SchemeID", Shape::Id, "the stored form that this one replaces; 0 for a new one", kOptional},
    {"SchemeName", Shape::Text, "name of the scheme"},
    {"lRebateType", Shape::Id, "code of the rebate type, as `rebate types` lists it"},
    {"lRebateMode", Shape::Id, "1 to 5 by goods, 6 and 7 by an organisation's total"},
    {"sOrg", Shape::ItemList, "organisations whose goods they are, in types by goods; everyone's where empty",
     kOptional},
    {"vecRangeData", Shape::Rows, "amount ranges, in order", true, kRange},
    {"vecSchemeData", Shape::Rows, "rates", true, kRow},
    {"Note", Shape::Text, "note", kOptional}};

bool IsGiven(const Json& row, const char* key) {
  return row.contains(key) && row[key] != "";
}

// What the single values don't tell; their shapes are right.
void CheckRows(const Json& form, ShapeCheck& check) {
  const Json& rows = form["vecSchemeData"];
  const auto ranges = static_cast<Long>(form["vecRangeData"].size());
  if (ranges == 0) check.Report("vecRangeData is empty");
  if (rows.empty()) check.Report("vecSchemeData is empty");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Text place = "vecSchemeData[" + std::to_string(i + 1) + "]";
    if (!IsGiven(rows[i], "FItemID") && !IsGiven(rows[i], "FOrgID")) {
      check.Report(place + ": one of FItemID and FOrgID is due");
    }
    const Long range = ToLong(FromJson(rows[i]["FRebateCount"], "FRebateCount"));
    if (range < 1 || range > ranges) {
      check.Report(place + ".FRebateCount is due as the position of a range, 1 to " + std::to_string(ranges));
    }
  }
}

}  // namespace

std::span<const KeyRule> FormKeys() {
  return kForm;
}

std::vector<Text> FormProblems(const Json& form) {
  ShapeCheck check;
  if (!form.is_object()) {
    check.Report("A form is one object");
    return check.problems();
  }
  check.CheckObject(form, kForm, {});
  if (check.problems().empty()) CheckRows(form, check);
  return check.problems();
}

}  // namespace rebate
