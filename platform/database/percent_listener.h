#pragma once

#include <functional>

namespace rebate {

// Hears how far a piece of work has come, in per cent.
using PercentListener = std::function<void(int percent)>;

}  // namespace rebate
