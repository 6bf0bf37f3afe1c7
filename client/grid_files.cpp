#include "client/grid_files.h"

#include <nlohmann/json.hpp>

#include "client/shape_check.h"

namespace rebate {
namespace {

constexpr KeyRule kRange[] = {{"FLower", Shape::Amount}, {"FUpper", Shape::Amount}, {"FIndex", Shape::Id, kOptional}};
constexpr KeyRule kRate[] = {{"FItemID", Shape::IdList, kOptional}, {"FOrgID", Shape::Id, kOptional},
                             {"FAmtRangeID", Shape::Id, kOptional}, {"FRebateRate", Shape::Amount},
                             {"FIndex", Shape::Id, kOptional},      {"FNote", Shape::Text, kOptional},
                             {"FSchemeID", Shape::Id, kOptional},   {"FRowID", Shape::Id, kOptional},
                             {"FUnitID", Shape::Id, kOptional},     {"FCheckItemID", Shape::IdList, kOptional},
                             {"FClassTypeID", Shape::Id, kOptional}};
constexpr KeyRule kRanges = {"ranges", Shape::Rows, true, kRange};
constexpr KeyRule kRates[] = {{"rows", Shape::Rows, true, kRate}, {"rest", Shape::Anything, kOptional}};

}  // namespace

std::vector<Text> RangeFileProblems(const Json& ranges) {
  ShapeCheck check;
  check.CheckValue(ranges, kRanges, "ranges");
  if (ranges.is_array() && ranges.empty()) check.Report("There is no range in it");
  return check.problems();
}

std::vector<Text> RateFileProblems(const Json& rates) {
  ShapeCheck check;
  if (!rates.is_object()) {
    check.CheckValue(rates, kRates[0], "rows");
    return check.problems();
  }
  check.CheckObject(rates, kRates, {});
  if (rates.contains("rest") && !rates["rest"].is_boolean()) check.Report("rest is due as true or false");
  return check.problems();
}

}  // namespace rebate
