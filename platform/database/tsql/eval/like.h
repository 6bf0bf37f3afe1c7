#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace rebate::tsql {

// Whether `text` matches the pattern of a LIKE, without regard to case and width: `%` for any characters, `_` for one,
// `[a-f]` and `[^a-f]` for one of a set, whose ranges go by the account's order; a `]` that comes first in a set is one
// of its characters. `escape` makes the character behind it plain, in a set too. Blanks at the end of `text` don't
// count where the pattern has none for them. A pattern that ends in its escape or inside a set matches nothing.
bool MatchesLike(std::string_view text, std::string_view pattern, std::optional<char32_t> escape = {});

// Where in `text`, in bytes, what the pattern is about begins: behind what a `%` at the pattern's start takes, which is
// as little as can be. Nothing where the text doesn't match.
std::optional<std::size_t> FindLike(std::string_view text, std::string_view pattern);

}  // namespace rebate::tsql
