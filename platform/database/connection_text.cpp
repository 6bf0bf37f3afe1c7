#include "platform/database/connection_text.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/automation/error.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

// A value that starts with a brace or a quote, `text` starting there: where its last character stands and what it says.
// Nothing where it isn't closed, or is closed in the middle of a value.
struct Enclosed {
  std::size_t end;
  Text value;
};

std::optional<Enclosed> ReadEnclosed(std::string_view text) {
  const char close = text[0] == '{' ? '}' : text[0];
  Text value;
  for (std::size_t at = 1; at < text.size(); ++at) {
    if (text[at] == close) {
      if (at + 1 == text.size() || text[at + 1] != close) {
        const std::size_t next = text.find_first_not_of(kWhiteSpace, at + 1);
        if (next != kNone && text[next] != ';') return std::nullopt;
        return Enclosed{at, value};
      }
      ++at;
    }
    value.push_back(text[at]);
  }
  return std::nullopt;
}

[[noreturn]] void Refuse(const Text& why) {
  throw Error(error_number::kInvalidCall, "DataSource", "The connection text can't be read: " + why);
}

bool Encloses(char c) {
  return c == '{' || c == '"' || c == '\'';
}

// A value, from `start` to the semicolon behind it or the end of the text.
struct Value {
  std::size_t end;
  Text text;
  bool unclosed;  // it starts with a brace or a quote that isn't closed
};

Value ReadValue(std::string_view text, std::size_t start) {
  const std::size_t first = text.find_first_not_of(kWhiteSpace, start);
  const bool encloses = first != kNone && Encloses(text[first]);
  if (encloses) {
    if (std::optional<Enclosed> enclosed = ReadEnclosed(text.substr(first))) {
      return {std::min(text.find(';', first + enclosed->end), text.size()), std::move(enclosed->value), false};
    }
  }
  const std::size_t end = std::min(text.find(';', start), text.size());
  return {end, Text(TrimWhite(text.substr(start, end - start))), encloses};
}

bool IsSecret(std::string_view key) {
  constexpr std::array<std::string_view, 7> kSecrets = {"pwd",        "pass",      "secret", "token",
                                                        "credential", "accesskey", "apikey"};
  // Where a password is found, which is no secret.
  constexpr std::array<std::string_view, 2> kPlaces = {kPasswordEnvironmentKey, kPasswordFileKey};
  const auto names = [&](std::string_view place) { return EqualsIgnoreCase(TrimWhite(key), place); };
  return std::none_of(kPlaces.begin(), kPlaces.end(), names) &&
         std::any_of(kSecrets.begin(), kSecrets.end(),
                     [&](std::string_view secret) { return ContainsIgnoreCase(key, secret); });
}

// Where a secret that starts at `start` surely has ended. A part without `=` behind it may belong to a password that
// holds a semicolon; one whose brace or quote isn't closed takes the rest.
std::size_t SecretEnd(std::string_view text, std::size_t start) {
  const Value value = ReadValue(text, start);
  if (value.unclosed) return text.size();
  std::size_t end = value.end;
  while (end < text.size()) {
    const std::size_t next = text.find_first_of(";=", end + 1);
    if (next == kNone) return text.size();
    if (text[next] == '=') return end;
    end = next;
  }
  return end;
}

}  // namespace

bool ConnectionKey::Is(std::string_view name) const {
  return EqualsIgnoreCase(key, name);
}

bool ConnectionKey::NamesSecret() const {
  return IsSecret(key);
}

std::vector<ConnectionKey> ParseConnectionText(std::string_view text) {
  std::vector<ConnectionKey> keys;
  for (std::size_t at = 0; at < text.size(); ++at) {
    at = text.find_first_not_of(kWhiteSpace, at);
    if (at == kNone) break;
    if (text[at] == ';') continue;
    const std::size_t equals = text.find_first_of(";=", at);
    if (equals == kNone || text[equals] == ';' || equals == at) {
      Refuse("its part " + std::to_string(keys.size() + 1) + " isn't of the form Key=Value.");
    }
    ConnectionKey key{TrimWhite(text.substr(at, equals - at)), {}, {}};
    Value value = ReadValue(text, equals + 1);
    if (value.unclosed && text[text.find_first_not_of(kWhiteSpace, equals + 1)] == '{') {
      Refuse("the brace of " + Text(key.key) + " isn't closed, or text follows it.");
    }
    key.value = std::move(value.text);
    key.raw = TrimWhite(text.substr(at, value.end - at));
    keys.push_back(std::move(key));
    at = value.end;
  }
  return keys;
}

Text JoinConnectionText(const std::vector<ConnectionKey>& keys) {
  Text text;
  for (const ConnectionKey& key : keys) {
    if (!text.empty()) text += ';';
    text += key.raw;
  }
  return text;
}

Text WithoutSecrets(std::string_view text) {
  Text shown;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t equals = text.find_first_of(";=", at);
    if (equals == kNone) break;
    shown += text.substr(at, equals + 1 - at);
    const std::string_view key = text.substr(at, equals - at);
    at = equals + 1;
    if (text[equals] == ';') continue;
    const bool secret = IsSecret(key);
    const std::size_t end = secret ? SecretEnd(text, at) : ReadValue(text, at).end;
    shown += secret ? "***" : text.substr(at, end - at);
    at = end;
  }
  if (at < text.size()) shown += text.substr(at);
  return shown;
}

}  // namespace rebate
