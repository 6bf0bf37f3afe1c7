#pragma once

#include "bench/bench_account.h"

namespace rebate::bench {

// An account with so many enabled schemes of type 2040, with `organisations` suppliers each out of 10,000. The larger
// ones take a while to fill: each is made once.
const BenchAccount& StoredSchemes(int schemes, int organisations);

}  // namespace rebate::bench
