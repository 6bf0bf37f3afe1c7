#include "client/form_file.h"

#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/shape_check.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr KeyRule kRange[] = {{"FLower", Shape::Amount}, {"FUpper", Shape::Amount}};
constexpr KeyRule kRow[] = {{"FItemID", Shape::IdList, kOptional}, {"FOrgID", Shape::Id, kOptional},
                            {"FRebateCount", Shape::Id},           {"FRebateRate", Shape::Amount},
                            {"FUnitID", Shape::Id, kOptional},     {"FCheckItemID", Shape::IdList, kOptional}};
constexpr KeyRule kForm[] = {{"SchemeID", Shape::Id, kOptional},
                             {"SchemeName", Shape::Text},
                             {"lRebateType", Shape::Id},
                             {"lRebateMode", Shape::Id},
                             {"sOrg", Shape::IdList, kOptional},
                             {"vecRangeData", Shape::Rows, true, kRange},
                             {"vecSchemeData", Shape::Rows, true, kRow},
                             {"Note", Shape::Text, kOptional}};

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
