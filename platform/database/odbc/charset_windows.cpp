#include <windows.h>

#include "platform/database/odbc/charset.h"
#include "platform/values/number_text.h"
#include "platform/values/text.h"

namespace rebate::odbc {
namespace {

// Whether the code page has the character, itself and not another one that looks like it.
bool Has(UINT code_page, std::string_view character) {
  const std::u16string wide = ToWide(character);
  BOOL replaced = FALSE;
  char buffer[16];
  const int size = WideCharToMultiByte(code_page, WC_NO_BEST_FIT_CHARS, reinterpret_cast<const wchar_t*>(wide.data()),
                                       static_cast<int>(wide.size()), buffer, sizeof(buffer), nullptr, &replaced);
  return size > 0 && replaced == FALSE;
}

}  // namespace

Text LocaleCharset() {
  return "CP" + std::to_string(GetACP());
}

Text FirstMissing(std::string_view text, const Text& charset) {
  const auto code_page = WholeNumber<std::uint32_t>(std::string_view(charset).substr(2));
  // UTF-8 has them all, and is the one that can't tell.
  if (!code_page || *code_page == CP_UTF8 || IsValidCodePage(*code_page) == FALSE) return {};
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    const char* const start = at;
    NextCodePoint(at, end);
    const std::string_view character(start, static_cast<std::size_t>(at - start));
    if (!Has(*code_page, character)) return Text(character);
  }
  return {};
}

}  // namespace rebate::odbc
