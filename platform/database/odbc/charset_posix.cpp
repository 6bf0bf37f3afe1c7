#include <iconv.h>
#include <langinfo.h>

#include "platform/database/odbc/charset.h"
#include "platform/values/text.h"

namespace rebate::odbc {

Text LocaleCharset() {
  return nl_langinfo(CODESET);
}

Text FirstMissing(std::string_view text, const Text& charset) {
  constexpr char32_t kEuro = 0x20AC;
  const iconv_t converter = iconv_open(charset.c_str(), "UTF-8");
  if (converter == reinterpret_cast<iconv_t>(-1)) return {};
  Text missing;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end && missing.empty();) {
    const char* const start = at;
    const char32_t character = NextCodePoint(at, end);
    char* in = const_cast<char*>(start);
    std::size_t in_left = static_cast<std::size_t>(at - start);
    char buffer[16];
    char* out = buffer;
    std::size_t out_left = sizeof(buffer);
    const bool has = iconv(converter, &in, &in_left, &out, &out_left) == 0;
    // The library's table lacks the euro sign that the server's has.
    if (!has && !(character == kEuro && charset == "CP936")) missing.assign(start, at);
  }
  iconv_close(converter);
  return missing;
}

}  // namespace rebate::odbc
