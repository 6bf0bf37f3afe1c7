#include "platform/database/data_source.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/automation/error.h"
#include "platform/database/connection_text.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

constexpr std::string_view kUserKey = "AppUser";
constexpr std::string_view kRightsKey = "Rights";
constexpr std::string_view kPathKey = "Data Source";
constexpr std::string_view kForms =
    "Name an embedded account by its path or as Data Source=<path>;AppUser=<user id>;Rights=<item classes>, and one on "
    "a server by an ODBC "
    "connection text with Driver= or DSN=.";

[[noreturn]] void Refuse(const Text& description) {
  throw Error(error_number::kInvalidCall, "DataSource", description);
}

Long UserId(const ConnectionKey& key) {
  constexpr Long kHighest = std::numeric_limits<std::int16_t>::max();
  const std::optional<Long> id = WholeNumber<Long>(key.value);
  if (!id || *id < 0 || *id > kHighest) {
    Refuse("AppUser must be a whole number from 0 to " + std::to_string(kHighest) + ", not '" + key.value + "'.");
  }
  return *id;
}

// The ids of item classes with commas or blanks between them, as a list with commas alone.
Text ItemClasses(const ConnectionKey& key) {
  Text list;
  Text value = key.value;
  std::replace(value.begin(), value.end(), ' ', ',');
  for (const Text& part : Split(value, ',')) {
    if (part.empty()) continue;
    const std::optional<Long> item_class = WholeNumber<Long>(part);
    if (!item_class || *item_class <= 0) {
      list.clear();
      break;
    }
    list += (list.empty() ? "" : ",") + std::to_string(*item_class);
  }
  if (list.empty()) {
    Refuse("Rights must be the item classes to which the user's data rights apply, such as 8,1 for suppliers and " +
           Text("customers, not '") + key.value + "'.");
  }
  return list;
}

bool NamesDriver(const std::vector<ConnectionKey>& keys) {
  for (const ConnectionKey& key : keys) {
    if (key.Is("Driver") || key.Is("DSN")) return true;
  }
  return false;
}

// Takes our own key out of `keys`.
std::optional<ConnectionKey> Take(std::vector<ConnectionKey>& keys, std::string_view name) {
  std::optional<ConnectionKey> taken;
  std::erase_if(keys, [&](const ConnectionKey& key) {
    if (!key.Is(name)) return false;
    if (taken) Refuse("The connection text says " + Text(name) + " twice.");
    taken = key;
    return true;
  });
  return taken;
}

}  // namespace

DataSource DataSource::Parse(std::string_view text) {
  DataSource source;
  const std::string_view trimmed = Trim(text);
  if (trimmed.empty()) Refuse("No data source is given. " + Text(kForms));
  if (trimmed.find('=') == std::string_view::npos) {
    source.path = trimmed;
    return source;
  }
  std::vector<ConnectionKey> keys = ParseConnectionText(trimmed);
  if (const auto user = Take(keys, kUserKey)) source.app_user = UserId(*user);
  if (const auto rights = Take(keys, kRightsKey)) source.rights = ItemClasses(*rights);
  source.embedded = !NamesDriver(keys);
  if (!source.embedded) {
    source.connection_text = JoinConnectionText(keys);
    return source;
  }
  if (const auto path = Take(keys, kPathKey)) source.path = path->value;
  if (!keys.empty()) {
    Refuse("An embedded account knows no connection key '" + Text(keys.front().key) + "'. " + Text(kForms));
  }
  if (source.path.empty()) Refuse("The connection text names no account. " + Text(kForms));
  return source;
}

}  // namespace rebate
