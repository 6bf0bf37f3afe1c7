#pragma once

#include <array>
#include <charconv>
#include <initializer_list>
#include <string_view>

#include "platform/automation/conversion.h"
#include "platform/automation/variant.h"

namespace rebate {

// A value on its way into a statement's text: an integer as decimal text, a text as it stands.
class Splice {
 public:
  Splice(Long value) : number_(), size_(Digits(value)) {}         // NOLINT
  Splice(std::string_view text) : text_(text), size_(kIsText) {}  // NOLINT
  Splice(const Text& text) : Splice(std::string_view(text)) {}    // NOLINT
  Splice(const char* text) : Splice(std::string_view(text)) {}    // NOLINT

  std::string_view view() const { return size_ == kIsText ? text_ : std::string_view(number_.data(), size_); }

 private:
  static constexpr std::size_t kIsText = static_cast<std::size_t>(-1);

  std::size_t Digits(Long value) {
    const auto end = std::to_chars(number_.data(), number_.data() + number_.size(), value);
    return static_cast<std::size_t>(end.ptr - number_.data());
  }

  std::array<char, 12> number_;
  std::string_view text_;
  std::size_t size_;
};

// `pattern` with each {} replaced by the next value. A pattern and its values that differ in number raise 5.
Text Fill(std::string_view pattern, std::initializer_list<Splice> values);

template <typename... Values>
Text Statement(std::string_view pattern, const Values&... values) {
  return Fill(pattern, {Splice(values)...});
}

// The lines joined by CR LF, none behind the last.
Text Lines(std::initializer_list<std::string_view> lines);

// Every ' doubled: for text that goes between single quotes.
inline Text DoubleQuotes(std::string_view text) {
  return Replace(text, "'", "''");
}

// An amount as decimal text, by the leading-number rule: what doesn't start with a number is 0.
inline Text Amount(const Variant& value) {
  return NumberText(LeadingNumber(ToText(value)));
}

}  // namespace rebate
