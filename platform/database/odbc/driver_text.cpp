#include "platform/database/odbc/driver_text.h"

#include <algorithm>

#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate::odbc {
namespace {

[[noreturn]] void Refuse(const Text& why) {
  throw Error(error_number::kInvalidCall, "DataSource", why);
}

// The second text that the driver manager lists for `name`, among drivers or among data sources; empty where it lists
// none of that name.
using List = SQLRETURN(SQL_API*)(SQLHENV, SQLUSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*, SQLCHAR*, SQLSMALLINT,
                                 SQLSMALLINT*);
Text Listed(const Environment& environment, List list, std::string_view name) {
  SQLCHAR found[256], about[4096];
  SQLSMALLINT found_size = 0, about_size = 0;
  for (SQLUSMALLINT next = SQL_FETCH_FIRST; SQL_SUCCEEDED(
           list(environment.get(), next, found, sizeof(found), &found_size, about, sizeof(about), &about_size));
       next = SQL_FETCH_NEXT) {
    if (!EqualsIgnoreCase(name, reinterpret_cast<const char*>(found))) continue;
    const auto size = std::min<std::size_t>(static_cast<std::size_t>(about_size), sizeof(about) - 1);
    return {reinterpret_cast<const char*>(about), size};
  }
  return {};
}

const ConnectionKey* Find(const std::vector<ConnectionKey>& keys, std::string_view name) {
  for (const ConnectionKey& key : keys) {
    if (key.Is(name)) return &key;
  }
  return nullptr;
}

std::string_view RawValue(const ConnectionKey& key) {
  return TrimWhite(key.raw.substr(key.raw.find('=') + 1));
}

bool HasBlankEnds(std::string_view value) {
  return TrimWhite(value).size() != value.size();
}

}  // namespace

Text DriverLibrary(const Environment& environment, const std::vector<ConnectionKey>& keys) {
  const ConnectionKey* const driver = Find(keys, "Driver");
  const ConnectionKey* const source = Find(keys, "DSN");
  Text name = driver != nullptr ? driver->value : Text();
  if (driver == nullptr && source != nullptr) name = Listed(environment, SQLDataSources, source->value);
  if (name.find('/') != Text::npos) return name;
  for (const Text& attribute : Split(Listed(environment, SQLDrivers, name), '\0')) {
    if (AsciiLower(attribute).starts_with("driver=")) return attribute.substr(attribute.find('=') + 1);
  }
  return name;
}

Braces BracesOf(std::string_view library) {
  const bool freetds = ContainsIgnoreCase(library, "tdsodbc") || ContainsIgnoreCase(library, "freetds");
  return freetds ? Braces::Plain : Braces::Doubled;
}

Text DriverText(const std::vector<ConnectionKey>& keys, Braces braces) {
  Text text;
  for (const ConnectionKey& key : keys) {
    const std::string_view raw = RawValue(key);
    const bool in_braces = raw.starts_with('{');
    if (!in_braces && raw.find(';') != std::string_view::npos) {
      Refuse("The value of " + Text(key.key) +
             " holds a semicolon and stands in quotes, which a driver takes as part of it: put it in braces.");
    }
    // The driver manager reads these two, by its own rule.
    const bool of_manager = key.Is("Driver") || key.Is("DSN");
    text += in_braces && !of_manager ? DriverKey(key.key, key.value, braces) : Text(key.raw) + ';';
  }
  return text;
}

Text DriverKey(std::string_view key, std::string_view value, Braces braces) {
  const Text start = Text(key) + '=';
  if (braces == Braces::Doubled) return start + '{' + Replace(value, "}", "}}") + "};";
  const bool plain = !value.starts_with('{') && value.find(';') == std::string_view::npos && !HasBlankEnds(value);
  if (plain) return start + Text(value) + ';';
  if (value.find("};") != std::string_view::npos) {
    Refuse("The value of " + Text(key) +
           " holds a closing brace with a semicolon behind it, which FreeTDS can't be told.");
  }
  return start + '{' + Text(value) + "};";
}

Text PasswordFromEnvironment(const Text& name) {
  const std::optional<Text> value = files::EnvironmentVariable(name);
  if (!value) Refuse("PasswordEnv names the environment variable '" + name + "', which isn't set.");
  return *value;
}

Text PasswordFromFile(const Text& path) {
  constexpr std::size_t kMost = 4096;
  using State = files::PrivateFile::State;
  const files::PrivateFile file = files::ReadPrivate(path, kMost);
  if (file.state == State::Unreadable) Refuse("PasswordFile names '" + path + "', which can't be read.");
  if (file.state == State::NoFile) Refuse("PasswordFile names '" + path + "', which is no file.");
  if (file.state == State::Shared) {
    Refuse("PasswordFile names '" + path +
           "', which others than its owner can reach: " + files::CommandToMakePrivate(path) + " first.");
  }
  const std::string_view text = file.start;
  Text password(Trim(text.substr(0, text.find('\n')), "\r"));
  if (password.empty()) Refuse("PasswordFile names '" + path + "', whose first line is empty.");
  return password;
}

}  // namespace rebate::odbc
