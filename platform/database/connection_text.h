#pragma once

#include <string_view>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// Keys of ours that say where the password to a server is found: in an environment variable, or in a file.
inline constexpr std::string_view kPasswordEnvironmentKey = "PasswordEnv";
inline constexpr std::string_view kPasswordFileKey = "PasswordFile";

// One `Key=Value` of a connection text.
struct ConnectionKey {
  std::string_view key;  // without blanks around it
  Text value;            // without blanks, braces or quotes around it
  std::string_view raw;  // key and value as they stand in the text

  // Whether the key bears this name, without regard to case.
  bool Is(std::string_view name) const;
  // Whether the value is one that must not be shown.
  bool NamesSecret() const;
};

// The keys of `Key=Value;Key=Value`, in order; they point into `text`. A value in braces or quotes may hold a
// semicolon, and a closing brace or quote that is doubled. Raises an error that shows no value where a part isn't of
// that form.
std::vector<ConnectionKey> ParseConnectionText(std::string_view text);

// The raw keys joined to a connection text again.
Text JoinConnectionText(const std::vector<ConnectionKey>& keys);

// `text` with the values of keys that name a password or a secret replaced by `***`; takes any text, also a sentence
// with such a key in it.
Text WithoutSecrets(std::string_view text);

}  // namespace rebate
