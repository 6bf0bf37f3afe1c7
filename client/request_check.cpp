#include "client/request_check.h"

#include <nlohmann/json.hpp>

namespace rebate {
namespace {

constexpr KeyRule kTypeRow[] = {
    {"FRebateType", Shape::Id, "code of the rebate type"},
    {"FRangeItemClass", Shape::Id, "1 customers or 8 suppliers alone, 4 organisations and goods"}};
constexpr KeyRule kHead[] = {
    {"FSchemeID", Shape::Id, "the stored scheme that this one replaces; 0 for a new one", kOptional},
    {"FSchemeName", Shape::Text, "name of the scheme"},
    {"FNote", Shape::Text, "note", kOptional},
    {"FEnable", Shape::Id, "0 stores the scheme disabled", kOptional},
    {"FCheckerID", Shape::Anything, "not read: the checker is the logged-in user", kOptional}};
constexpr KeyRule kRange[] = {{"FLowerLimit", Shape::Amount, "where the range begins"},
                              {"FUpperLimit", Shape::Amount, "where it ends"}};
constexpr KeyRule kOrganisation[] = {
    {"FRowID", Shape::Id, "grid row in which it stands, counted from 1; 0 for all of them"},
    {"FItemClassID", Shape::Id, "8 supplier, 1 customer, 3 employee"},
    {"FItemID", Shape::Item, "the organisation; 0 for its whole class, -1 for abnormal accounts"},
    {"FShowName", Shape::Text, "name under which it is shown"},
    {"CheckPoints", Shape::Points, "check items of the whole scheme, on the first organisation with FRowID 0",
     kOptional}};
constexpr KeyRule kGoods[] = {{"FRowID", Shape::Id, "position of the grid row"},
                              {"FItemID", Shape::Item, "the goods item"},
                              {"FUnitID", Shape::Item, "unit in which it is counted; 0 for none"},
                              {"FShowName", Shape::Text, "name under which it is shown"}};
constexpr KeyRule kCheckItem[] = {{"FRowID", Shape::Id, "position of the grid row"},
                                  {"FItemClassID", Shape::Id, "item class of the check item"},
                                  {"FItemID", Shape::Item, "the check item"}};
constexpr KeyRule kRate[] = {{"FRowID", Shape::Id, "position of the grid row"},
                             {"FRebateRate", Shape::Amount, "rate, in per cent or in the unit of the type"},
                             {"FIndex", Shape::Id, "position of the range, counted from 1"}};
constexpr KeyRule kGridRow[] = {
    {"FItemIDs", Shape::Rows, "goods of the row, in types by goods", kOptional, kGoods, KeyRule::ListAndRows},
    {"FCheckItems", Shape::Rows, "check items of the row", kOptional, kCheckItem, KeyRule::ListAndRows},
    {"FRebateRates", Shape::Rows, "rates of the row by range", kOptional, kRate, KeyRule::ListAndRows},
    {"FZH", Shape::Id, "1 where the row's goods are counted together", kOptional}};
constexpr KeyRule kRequest[] = {
    {"FRebateType", Shape::Id, "code of the rebate type, as `rebate types` lists it", kOptional},
    {"SchemeConst", Shape::Row, "in the place of FRebateType: the whole row of the type", kOptional, kTypeRow,
     KeyRule::None, true},
    {"SchemeMainData", Shape::Row, "head of the scheme", true, kHead},
    {"AllRangesData", Shape::Rows, "amount ranges, in order", true, kRange},
    {"AllOrgsData", Shape::Rows, "who earns the rebate", true, kOrganisation},
    {"AllGridRows", Shape::Rows, "grid rows: goods and rates", true, kGridRow, KeyRule::Rows}};

}  // namespace

std::span<const KeyRule> RequestKeys() {
  return kRequest;
}

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
