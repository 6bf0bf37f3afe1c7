#pragma once

#include <string_view>

#include "platform/values/types.h"

namespace rebate::odbc {

// A character set is named as `CP936` or as the system names it.

// The one of this process's plain texts.
Text LocaleCharset();
// The first character of `text` (UTF-8) that the character set lacks; empty where it has them all, or isn't known here.
Text FirstMissing(std::string_view text, const Text& charset);

}  // namespace rebate::odbc
