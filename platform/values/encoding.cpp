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

}  // namespace rebate
