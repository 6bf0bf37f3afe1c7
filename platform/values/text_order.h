#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// The order in which a Chinese account sorts: signs, digits, Latin letters, then Chinese by pinyin. Less than, equal to
// or greater than 0; 0 exactly where CompareText gives 0. It is the system's own collation, opened on first use, and
// CompareText where the system has none. Any thread may call it.
int CompareInOrder(std::string_view left, std::string_view right);

// A number by which texts can be put in this order faster: of two texts, the one with the lesser number comes first;
// where the numbers are equal, CompareInOrder decides. Nothing for a text that begins with others than Latin letters,
// digits and blanks, and for a set of texts where any has none.
std::optional<std::uint64_t> OrderPrefix(std::string_view text);

// The library that sorts, with its version; empty where it is the system itself or nothing.
Text OrderVersion();

}  // namespace rebate
