#pragma once

#include <string_view>

namespace rebate {

// The order in which a Chinese account sorts: signs, digits, Latin letters, then Chinese by pinyin. Less than, equal to
// or greater than 0; 0 exactly where CompareText gives 0. It is the system's own collation, opened on first use, and
// CompareText where the system has none. Any thread may call it.
int CompareInOrder(std::string_view left, std::string_view right);

}  // namespace rebate
