#pragma once

#include <string_view>
#include <vector>

#include "platform/database/connection_text.h"
#include "platform/database/odbc/handle.h"

namespace rebate::odbc {

// How a driver reads a value in braces.
enum class Braces {
  Doubled,  // as the standard has it: a closing brace in it is doubled
  Plain,    // FreeTDS: it ends with the first closing brace in front of a semicolon, none is doubled
};

// The library that answers for a `Driver=` or `DSN=`, as far as the driver manager knows; a path stays as it is.
Text DriverLibrary(const Environment& environment, const std::vector<ConnectionKey>& keys);
Braces BracesOf(std::string_view library);

// The text that says `keys` to a driver. Raises where a value can't be said to it, without showing the value.
Text DriverText(const std::vector<ConnectionKey>& keys, Braces braces);

// `Key=Value;` so that the driver reads the value as it is.
Text DriverKey(std::string_view key, std::string_view value, Braces braces);

// The value of the environment variable, and the first line of the file, as a password. Each raises where there is
// none; the file must be one that nobody but its owner may reach.
Text PasswordFromEnvironment(const Text& name);
Text PasswordFromFile(const Text& path);

}  // namespace rebate::odbc
