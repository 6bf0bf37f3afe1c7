#pragma once

#include <cstddef>
#include <string_view>

#include "platform/values/types.h"

// Bytes as texts.
namespace rebate {

// How many bytes at the start of `bytes` are well-formed UTF-8.
std::size_t WellFormedSize(std::string_view bytes);
// Whether bytes that aren't all well formed are UTF-8 all the same, with some damage. It goes by the characters of
// three and four bytes, which a text of another encoding seldom holds by chance: one for each four bytes that are none.
bool IsDamagedUtf8(std::string_view bytes);

// Bytes of another encoding in UTF-8, up to the first that belongs to no character.
struct Decoded {
  Text text;
  bool whole = true;  // there was no such byte
};

// Reads GB18030, and so GBK and GB2312 as well. Raises where the system doesn't know it.
Decoded FromGb18030(std::string_view bytes);

}  // namespace rebate
