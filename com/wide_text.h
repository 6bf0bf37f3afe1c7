#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/values/types.h"

namespace rebate::com {

// The text of a BSTR, which may be null (the empty text).
Text FromBstr(BSTR text);

// A new BSTR, which the caller owns. Raises std::bad_alloc.
BSTR NewBstr(std::string_view text);

// For the system's own functions.
std::wstring Wide(std::string_view text);
Text Narrow(std::wstring_view text);

// A BSTR that is freed with it.
class OwnBstr {
 public:
  OwnBstr() = default;
  explicit OwnBstr(std::string_view text) : text_(NewBstr(text)) {}
  OwnBstr(const OwnBstr&) = delete;
  OwnBstr& operator=(const OwnBstr&) = delete;
  ~OwnBstr() { SysFreeString(text_); }

  BSTR get() const { return text_; }
  BSTR* Receive() { return &text_; }
  BSTR Detach() { return std::exchange(text_, nullptr); }

 private:
  BSTR text_ = nullptr;
};

}  // namespace rebate::com
