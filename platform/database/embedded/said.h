#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/values/types.h"

// What a text says by `raiserror` and `throw`.
namespace rebate {

struct RaisedMessage {
  Text format;  // with the marks of printf
  std::int64_t severity = 0;
  std::int64_t state = 0;
  std::vector<std::optional<Text>> arguments;  // as text; nothing for Null
};

// The message with its arguments. Raises it where its severity is that of an error, 11 and more.
Text RaisedText(const RaisedMessage& raised);

// Raises the error of a `throw`; the server's refusal where one of its parts isn't right.
[[noreturn]] void ThrowRaised(std::optional<std::int64_t> number, const std::optional<Text>& message,
                              std::optional<std::int64_t> state);

}  // namespace rebate
