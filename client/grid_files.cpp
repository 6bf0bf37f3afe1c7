#include "client/grid_files.h"

#include <nlohmann/json.hpp>

namespace rebate {
namespace {

constexpr KeyRule kRange[] = {
    {"FLower", Shape::Amount, "where the range begins"},
    {"FUpper", Shape::Amount, "where it ends"},
    {"FIndex", Shape::Id, "its position, counted from 1; that at which it stands where left out", kOptional}};
constexpr KeyRule kRate[] = {
    {"FItemID", Shape::Item, "goods item, in a grid of goods", kOptional},
    {"FOrgID", Shape::Item, "organisation whose rate it is", kOptional},
    {"FAmtRangeID", Shape::Id, "id of the range; that at the position FIndex where left out", kOptional},
    {"FRebateRate", Shape::Amount, "rate"},
    {"FIndex", Shape::Id, "position of the range; that of FAmtRangeID where left out", kOptional},
    {"FNote", Shape::Text, "note", kOptional},
    {"FSchemeID", Shape::Id, "0: a rate of the grid belongs to no scheme", kOptional},
    {"FRowID", Shape::Id, "grid row", kOptional},
    {"FUnitID", Shape::Item, "unit in which the goods are counted", kOptional},
    {"FCheckItemID", Shape::IdList, "check items", kOptional},
    {"FClassTypeID", Shape::Id, "the type of the grid", kOptional}};
constexpr KeyRule kRanges[] = {{"ranges", Shape::Rows, "amount ranges: the file is this array", true, kRange}};
constexpr KeyRule kRates[] = {
    {"rows", Shape::Rows, "rates; the file may be this array alone", true, kRate},
    {"rest", Shape::Flag, "true stores the rows for every organisation that isn't selected", kOptional}};

}  // namespace

std::span<const KeyRule> RangeFileKeys() {
  return kRanges;
}

std::span<const KeyRule> RateFileKeys() {
  return kRates;
}

std::vector<Text> RangeFileProblems(const Json& ranges) {
  ShapeCheck check;
  check.CheckValue(ranges, kRanges[0], "ranges");
  if (ranges.is_array() && ranges.empty()) check.Report("There is no range in it");
  return check.problems();
}

std::vector<Text> RateFileProblems(const Json& rates) {
  ShapeCheck check;
  if (rates.is_object()) {
    check.CheckObject(rates, kRates, {});
  } else {
    check.CheckValue(rates, kRates[0], "rows");
  }
  return check.problems();
}

}  // namespace rebate
