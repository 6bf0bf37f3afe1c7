#pragma once

#include "platform/values/types.h"

// The small codes of the account's item classes and of the organisations that a scheme names.
namespace rebate::item_class {

inline constexpr Long kCustomers = 1;
inline constexpr Long kEmployees = 3;
inline constexpr Long kGoods = 4;
inline constexpr Long kSuppliers = 8;

// Organisation ids that are no item.
inline constexpr Long kWholeClass = 0;         // every item of the class
inline constexpr Long kAbnormalAccounts = -1;  // the entry "往来异常"

}  // namespace rebate::item_class
