#pragma once

#include <compare>

#include "bench/bench_account.h"

namespace rebate::bench {

// What an account holds. Ids of schemes run from 1 on; scheme s holds the suppliers and goods that the functions below
// tell.
struct StoredShape {
  int schemes = 0;
  int organisations = 0;   // suppliers of each scheme
  int suppliers = 10'000;  // that the schemes share: each stands in schemes * organisations / suppliers of them
  int goods = 0;      // of each scheme, no two schemes having any in common; the type is by goods where there are any
  int rates = 0;      // rates of each scheme, and ranges
  int disabled = 0;   // schemes that are disabled; they stand apart evenly
  int customers = 0;  // so many customers, each of which stands in the first 20 schemes, and so many employees, all of
                      // whom the first 20 schemes cover as a whole class
  auto operator<=>(const StoredShape&) const = default;
};

// Schemes by goods of two suppliers each, who stand in 20 of them however many there are; 20 schemes are disabled.
inline StoredShape GrowingShape(int schemes) {
  return {
      .schemes = schemes, .organisations = 2, .suppliers = schemes / 10, .goods = 3, .disabled = 20, .customers = 100};
}

// Each account is made once and kept to the end of the program.
const BenchAccount& StoredSchemes(const StoredShape& shape);
// An account with so many enabled schemes of type 2040, with `organisations` suppliers each out of 10,000.
const BenchAccount& StoredSchemes(int schemes, int organisations);
// Fills an account that is empty but for its types.
void StoreSchemes(const BenchAccount& account, const StoredShape& shape);

inline constexpr int kFirstCustomer = 10'000'001;
inline constexpr int kFirstEmployee = 20'000'001;
inline constexpr int kFirstGoods = 30'000'001;
inline int SupplierOf(const StoredShape& shape, int scheme, int number) {
  return static_cast<int>((static_cast<long long>(scheme - 1) * shape.organisations + number) % shape.suppliers) + 1;
}
Text SupplierNumber(int supplier);
Text SchemeName(int scheme);
inline int GoodsOf(const StoredShape& shape, int scheme, int number) {
  return kFirstGoods + (scheme - 1) * shape.goods + number;
}

}  // namespace rebate::bench
