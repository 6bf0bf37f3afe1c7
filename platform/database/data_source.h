#pragma once

#include <optional>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

// A data source as its connection text names it: `Key=Value;Key=Value`, or the bare path of an embedded account.
struct DataSource {
  bool embedded = true;
  Text path;             // of an embedded account
  Text connection_text;  // for an ODBC driver, without our own keys
  Long app_user = 1;     // the logged-in user's id
  // The item classes to which the user's data rights apply, as in `8,1`; nothing where the text doesn't tell, and the
  // host's login does.
  std::optional<Text> rights;

  // Raises an error that says what is wrong with the text.
  static DataSource Parse(std::string_view text);
};

}  // namespace rebate
