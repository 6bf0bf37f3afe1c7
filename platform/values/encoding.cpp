#include "platform/values/encoding.h"

#include "platform/values/text.h"

namespace rebate {

std::size_t WellFormedSize(std::string_view bytes) {
  const char* const end = bytes.data() + bytes.size();
  for (const char* at = bytes.data(); at != end;) {
    const char* const start = at;
    if (NextCodePoint(at, end) >= kInvalidByte) return static_cast<std::size_t>(start - bytes.data());
  }
  return bytes.size();
}

bool IsDamagedUtf8(std::string_view bytes) {
  std::size_t good = 0;
  std::size_t bad = 0;
  const char* const end = bytes.data() + bytes.size();
  for (const char* at = bytes.data(); at != end;) {
    const char32_t code_point = NextCodePoint(at, end);
    if (code_point >= kInvalidByte) {
      ++bad;
    } else if (code_point >= 0x800) {
      ++good;
    }
  }
  return bad > 0 && 4 * good > bad;
}

}  // namespace rebate
