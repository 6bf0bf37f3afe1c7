#pragma once

#include <cstdint>
#include <string>

namespace rebate {

using Text = std::string;   // UTF-8
using Long = std::int32_t;  // the automation world's integer

}  // namespace rebate
