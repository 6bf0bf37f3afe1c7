#include "client/request_check.h"

#include <nlohmann/json.hpp>

#include "client/shape_check.h"

namespace rebate {
namespace {

constexpr KeyRule kTypeRow[] = {{"FRebateType", Shape::Id}, {"FRangeItemClass", Shape::Id}};
constexpr KeyRule kHead[] = {{"FSchemeID", Shape::Id, kOptional},
                             {"FSchemeName", Shape::Text},
                             {"FNote", Shape::Text, kOptional},
                             {"FCheckerID", Shape::Anything, kOptional}};
constexpr KeyRule kRange[] = {{"FLowerLimit", Shape::Amount}, {"FUpperLimit", Shape::Amount}};
constexpr KeyRule kOrganisation[] = {{"FRowID", Shape::Id},
                                     {"FItemClassID", Shape::Id},
                                     {"FItemID", Shape::Id},
                                     {"FShowName", Shape::Text},
                                     {"CheckPoints", Shape::Points, kOptional}};
constexpr KeyRule kGoods[] = {
    {"FRowID", Shape::Id}, {"FItemID", Shape::Id}, {"FUnitID", Shape::Id}, {"FShowName", Shape::Text}};
constexpr KeyRule kCheckItem[] = {{"FRowID", Shape::Id}, {"FItemClassID", Shape::Id}, {"FItemID", Shape::Id}};
constexpr KeyRule kRate[] = {{"FRowID", Shape::Id}, {"FRebateRate", Shape::Amount}, {"FIndex", Shape::Id}};
constexpr KeyRule kGridRow[] = {{"FItemIDs", Shape::Rows, kOptional, kGoods, KeyRule::ListAndRows},
                                {"FCheckItems", Shape::Rows, kOptional, kCheckItem, KeyRule::ListAndRows},
                                {"FRebateRates", Shape::Rows, kOptional, kRate, KeyRule::ListAndRows},
                                {"FZH", Shape::Id, kOptional}};
constexpr KeyRule kRequest[] = {{"FRebateType", Shape::Id, kOptional},
                                {"SchemeConst", Shape::Row, kOptional, kTypeRow, KeyRule::None, true},
                                {"SchemeMainData", Shape::Row, true, kHead},
                                {"AllRangesData", Shape::Rows, true, kRange},
                                {"AllOrgsData", Shape::Rows, true, kOrganisation},
                                {"AllGridRows", Shape::Rows, true, kGridRow, KeyRule::Rows}};

}  // namespace

std::vector<Text> RequestProblems(const Json& request) {
  ShapeCheck check;
  if (!request.is_object()) {
    check.Report("A request is one object");
    return check.problems();
  }
  if (request.contains("SchemeConst") == request.contains("FRebateType")) {
    check.Report("One of SchemeConst and FRebateType is due");
  }
  check.CheckObject(request, kRequest, {});
  return check.problems();
}

}  // namespace rebate
