#pragma once

#include <string_view>

#include "platform/values/types.h"

// The rebate types: who earns the rebate, and how it is counted. A code stands as FRebateType with a scheme and as
// FClassTypeID with ranges, rules and selections.
namespace rebate::rebate_type {

// Purchases: rebates of suppliers.
inline constexpr Long kPurchasesFirst = 2040;
inline constexpr Long kPurchaseTotalPercent = 2040;
inline constexpr Long kPurchaseGoodsPercent = 2041;
inline constexpr Long kPurchaseTotalMoney = 2046;
inline constexpr Long kPurchasesLast = 2046;

// Sales: rebates of customers.
inline constexpr Long kSalesFirst = 3020;
inline constexpr Long kSalesTotalPercent = 3020;
inline constexpr Long kSalesGoodsPercent = 3021;
inline constexpr Long kSalesTotalMoney = 3026;
inline constexpr Long kSalesLast = 3026;

// Rebates of salesmen.
inline constexpr Long kSalesmanTotal = 4020;
inline constexpr Long kSalesmanGoods = 4021;

// The fixed text of a type that ranges and rules carry as their note; empty for a code that is none.
std::string_view ModeName(Long code);

// Whether a form of this type lists organisations rather than goods.
constexpr bool IsFormTotal(Long code) {
  return code == kPurchaseTotalPercent || code == kPurchaseTotalMoney || code == kSalesTotalPercent ||
         code == kSalesTotalMoney;
}

// Whether a rate grid of this type is one of whole organisations, whose goods grid has the code one above.
constexpr bool IsOrganisationGrid(Long code) {
  return code == kPurchaseTotalPercent || code == kSalesTotalPercent || code == kSalesmanTotal;
}

// The item class, as text, that ties a type to the user's data rights; empty for a type without such rights.
constexpr std::string_view RightsClass(Long code) {
  return code == kPurchaseTotalPercent ? "8" : code == kSalesTotalPercent ? "1" : "";
}

}  // namespace rebate::rebate_type
