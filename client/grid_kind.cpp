#include "client/grid_kind.h"

#include "model/item_class.h"
#include "model/rebate_type.h"
#include "platform/automation/error.h"

namespace rebate {

GridKind GridKindOf(Long type) {
  switch (type) {
    case rebate_type::kPurchaseTotalPercent:
      return {false, item_class::kSuppliers, item_class::kSuppliers};
    case rebate_type::kSalesTotalPercent:
      return {false, item_class::kCustomers, item_class::kCustomers};
    case rebate_type::kSalesmanTotal:
      return {false, item_class::kEmployees, item_class::kEmployees};
    case rebate_type::kPurchaseGoodsPercent:
      return {true, item_class::kGoods, item_class::kSuppliers};
    case rebate_type::kSalesGoodsPercent:
      return {true, item_class::kGoods, item_class::kCustomers};
    case rebate_type::kSalesmanGoods:
      return {true, item_class::kGoods, item_class::kEmployees};
    default:
      throw Error(error_number::kInvalidCall, "rebate",
                  "Type " + std::to_string(type) + " has no rate grid; 2040, 2041, 3020, 3021, 4020 and 4021 have one");
  }
}

}  // namespace rebate
