#pragma once

#include <string_view>

#include "platform/automation/types.h"
#include "platform/database/connection.h"

namespace rebate {

// A data source as its connection text names it: `Key=Value;Key=Value`, or the bare path of an embedded account.
struct DataSource {
  bool embedded = true;
  Text path;             // of an embedded account
  Text connection_text;  // for an ODBC driver, without our own keys
  Long app_user = 1;     // the logged-in user's id

  // Raises an error that says what is wrong with the text.
  static DataSource Parse(std::string_view text);
};

// `text` with the values of password keys replaced by `***`.
Text WithoutPasswords(std::string_view text);

// Opens a connection. Raises, naming the path or the server and what to do, where there is no account to open.
ConnectionRef Connect(const DataSource& source);

// Makes a new embedded account file, empty of tables, and opens it, or opens an empty server database; refuses,
// touching nothing, where something stands there already.
ConnectionRef ConnectForSetup(const DataSource& source);

}  // namespace rebate
