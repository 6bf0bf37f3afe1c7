#include "calls/id_check.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "platform/automation/error.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

constexpr std::array kNumbers = {"strSchemeList", "sOrg",   "FLower",          "FUpper",         "FLowerLimit",
                                 "FUpperLimit",   "FIndex", "FRebateType",     "FRebateRate",    "FRebateCount",
                                 "RebateType",    "Status", "FRangeItemClass", "RebateClassType"};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool StandsForNumbers(std::string_view name) {
  // A key that is a number counts ids.
  if (!name.empty() && std::all_of(name.begin(), name.end(), IsDigit)) return true;
  const auto is = [&](std::string_view other) { return EqualsIgnoreCase(name, other); };
  return (name.size() > 2 && EqualsIgnoreCase(name.substr(name.size() - 2), "ID")) ||
         std::any_of(kNumbers.begin(), kNumbers.end(), is);
}

// `12`, `-0.5`, `1e3` or `12.5%`.
bool IsNumber(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  if (!text.empty() && text.back() == '%') text.remove_suffix(1);
  const bool begins = !text.empty() && (IsDigit(text.front()) || text.front() == '.');
  const auto fits = [](char c) { return IsDigit(c) || c == '.' || c == 'e' || c == 'E'; };
  return begins && std::all_of(text.begin(), text.end(), fits);
}

bool IsNumbers(std::string_view text) {
  while (true) {
    const std::size_t comma = text.find(',');
    const std::string_view part = Trim(text.substr(0, comma));
    if (!part.empty() && !IsNumber(part)) return false;
    if (comma == std::string_view::npos) return true;
    text.remove_prefix(comma + 1);
  }
}

bool IsWord(std::string_view key) {
  const auto fits = [](char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c & 0x80) != 0;
  };
  return !key.empty() && std::all_of(key.begin(), key.end(), fits);
}

[[noreturn]] void Refuse(const Text& reason) {
  throw Error(error_number::kInvalidCall, "rebate", reason);
}

void Check(std::string_view name, const Json& value, const Text& path) {
  if (value.is_string() && StandsForNumbers(name) && !IsNumbers(value.get_ref<const Text&>())) {
    Refuse(path + " is due as a number, or numbers with commas between them, not " + JsonLine(value));
  }
  if (value.is_array()) {
    std::size_t position = 0;
    for (const Json& item : value) Check(name, item, path + "[" + std::to_string(++position) + "]");
  }
  // A value with a kind has been read as one.
  if (!value.is_object() || value.contains("$")) return;
  for (const auto& [key, member] : value.items()) {
    if (!IsWord(key)) Refuse(path + " has a key that is no name: " + JsonLine(Json(key)));
    Check(key, member, path + "." + key);
  }
}

}  // namespace

void CheckIds(const Json& args) {
  for (const auto& [name, value] : args.items()) {
    // Statements are what it is for.
    if (!EqualsIgnoreCase(name, "SQLBatch")) Check(name, value, "argument " + name);
  }
}

}  // namespace rebate
