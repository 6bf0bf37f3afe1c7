#include "client/printable.h"

#include <array>
#include <cstdio>

namespace rebate {
namespace {

constexpr char kLead = '\xC2';

bool IsControl(unsigned char c) {
  return c < 0x20 || c == 0x7F;
}

// Whether the byte behind the lead makes one of U+0080 to U+009F.
bool IsHighControl(unsigned char c) {
  return c >= 0x80 && c < 0xA0;
}

}  // namespace

Text Printable(std::string_view text) {
  Text printable;
  printable.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kLead && i + 1 < text.size() && IsHighControl(static_cast<unsigned char>(text[i + 1]))) {
      printable += ' ';
      ++i;
    } else {
      printable += IsControl(static_cast<unsigned char>(text[i])) ? ' ' : text[i];
    }
  }
  return printable;
}

TerminalText::int_type TerminalText::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  return Put(traits_type::to_char_type(c)) ? c : traits_type::eof();
}

std::streamsize TerminalText::xsputn(const char* text, std::streamsize size) {
  for (std::streamsize i = 0; i < size; ++i) {
    if (!Put(text[i])) return i;
  }
  return size;
}

bool TerminalText::Put(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (lead_waits_) {
    lead_waits_ = false;
    if (IsHighControl(byte)) return PutEscaped(byte);
    if (terminal_.sputc(kLead) == traits_type::eof()) return false;
  }
  if (c == kLead) {
    lead_waits_ = true;
    return true;
  }
  const bool passes = !IsControl(byte) || c == '\n' || c == '\t' || passed_.find(c) != Text::npos;
  return passes ? terminal_.sputc(c) != traits_type::eof() : PutEscaped(byte);
}

bool TerminalText::PutEscaped(unsigned char code) {
  std::array<char, 8> escaped{};
  const int size = std::snprintf(escaped.data(), escaped.size(), "\\u%04x", code);
  return terminal_.sputn(escaped.data(), size) == size;
}

}  // namespace rebate
