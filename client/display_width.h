#pragma once

#include <cstddef>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// The columns that `text` takes on a terminal: two for an East Asian wide character or an emoji, none for a combining
// mark, one for any other character and for each byte that is no UTF-8.
std::size_t DisplayWidth(std::string_view text);

// `text` where it fits into `width` columns, else as much of its start as fits with `…` behind it. Never cuts a
// character.
Text FitToWidth(std::string_view text, std::size_t width);

}  // namespace rebate
