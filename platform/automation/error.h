#pragma once

#include <exception>
#include <string_view>
#include <utility>

#include "platform/values/types.h"

namespace rebate {

// The one error that crosses the component's inside. `number` is what an automation client reads as the error's number:
// a small positive number for the language's own errors, that of the library which raised it for others.
struct Error : std::exception {
  Error(Long number_in, Text source_in, Text description_in)
      : number(number_in), source(std::move(source_in)), description(std::move(description_in)) {}

  const char* what() const noexcept override { return description.c_str(); }

  Long number;
  Text source;
  Text description;
  Text help_file;
  Long help_context = 0;
};

// Numbers of the language's own errors.
namespace error_number {
inline constexpr Long kInvalidCall = 5;          // an argument that the callee refuses; also every explicit refusal
inline constexpr Long kOverflow = 6;             // a number too large for its type
inline constexpr Long kOutOfMemory = 7;          // no memory left
inline constexpr Long kSubscript = 9;            // an index outside a list
inline constexpr Long kTypeMismatch = 13;        // a value that doesn't convert
inline constexpr Long kInternal = 51;            // what no one foresaw
inline constexpr Long kObjectNotSet = 91;        // a member of a null reference
inline constexpr Long kInvalidNull = 94;         // a Null where a value is due
inline constexpr Long kCannotCreate = 429;       // a class that can't be created
inline constexpr Long kNoSuchMember = 438;       // an object without the member that is called
inline constexpr Long kNotOptional = 449;        // a required argument left out
inline constexpr Long kArgumentCount = 450;      // too many or too few arguments
inline constexpr Long kElementNotFound = 32811;  // a key that a dictionary doesn't hold
inline constexpr Long kNotImplemented = -2147467263;
}  // namespace error_number

// The failure that is being handled, whatever its kind: 7 for a lack of memory, 51 for what is no Error.
Error CurrentError();

[[noreturn]] inline void ThrowTypeMismatch() {
  throw Error(error_number::kTypeMismatch, "", "Type mismatch");
}

}  // namespace rebate
