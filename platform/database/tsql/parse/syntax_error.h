#pragma once

#include <string_view>

// The errors that a text of Transact-SQL meets before anything of it runs: number -2147217900, in the server's words.
namespace rebate::tsql {

// Raises `description`.
[[noreturn]] void ThrowSyntax(std::string_view description);

// "Incorrect syntax near 'x'.", or near the keyword, where `text` is one and `keyword` is set.
[[noreturn]] void ThrowNear(std::string_view text, bool keyword = false);

// "Unclosed quotation mark after the character string 'x'."
[[noreturn]] void ThrowUnclosed(std::string_view text);

// The refusal of what Transact-SQL has and an embedded account doesn't: `name` in capitals.
[[noreturn]] void ThrowUnsupported(std::string_view name);

// Whether `word` is reserved in the dialect, in any case: it can't be a name without brackets.
bool IsReserved(std::string_view word);

}  // namespace rebate::tsql
