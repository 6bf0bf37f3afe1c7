#include "com/wide_text.h"

#include <new>

#include "platform/values/text.h"

namespace rebate::com {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

Text Narrow(std::wstring_view text) {
  return FromWide({reinterpret_cast<const char16_t*>(text.data()), text.size()});
}

std::wstring Wide(std::string_view text) {
  const std::u16string wide = ToWide(text);
  return std::wstring(reinterpret_cast<const wchar_t*>(wide.data()), wide.size());
}

Text FromBstr(BSTR text) {
  return Narrow({text, SysStringLen(text)});
}

BSTR NewBstr(std::string_view text) {
  const std::u16string wide = ToWide(text);
  BSTR made = SysAllocStringLen(reinterpret_cast<const wchar_t*>(wide.data()), static_cast<UINT>(wide.size()));
  if (made == nullptr) throw std::bad_alloc();
  return made;
}

}  // namespace rebate::com
