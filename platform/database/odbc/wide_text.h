#pragma once

#include <string>
#include <string_view>

#include "platform/automation/types.h"

namespace rebate {

// Between UTF-8 and UTF-16, the driver manager's wide text. What isn't well formed becomes U+FFFD.
std::u16string ToWide(std::string_view text);
Text FromWide(std::u16string_view wide);

}  // namespace rebate
