#pragma once

#include <string_view>

namespace rebate {

// Whether `text` matches the pattern of a LIKE, without regard to case: `%` for any characters, `_` for one, `[a-f]`
// and
// `[^a-f]` for one of a set; `escape` (empty where not given) makes the character behind it plain. Blanks at the end of
// `text` don't count where the pattern has none for them.
bool MatchesLike(std::string_view text, std::string_view pattern, std::string_view escape);

}  // namespace rebate
