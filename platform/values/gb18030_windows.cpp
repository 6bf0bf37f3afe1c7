#include <windows.h>

#include <algorithm>
#include <stdexcept>

#include "platform/values/encoding.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

constexpr UINT kGb18030 = 54936;

// False where the bytes aren't all characters.
bool AppendDecoded(std::string_view bytes, Text& text) {
  const int size = static_cast<int>(bytes.size());
  const int units = MultiByteToWideChar(kGb18030, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
  if (units <= 0) return false;
  std::u16string wide(static_cast<std::size_t>(units), u'\0');
  MultiByteToWideChar(kGb18030, MB_ERR_INVALID_CHARS, bytes.data(), size, reinterpret_cast<wchar_t*>(wide.data()),
                      units);
  text += FromWide(wide);
  return true;
}

// A byte below 0x80 is a character, any other begins one of two bytes, or of four where a digit follows.
std::size_t CharacterSize(std::string_view bytes) {
  if (static_cast<unsigned char>(bytes[0]) < 0x80) return 1;
  const std::size_t due = bytes.size() > 1 && bytes[1] >= '0' && bytes[1] <= '9' ? 4 : 2;
  return std::min(due, bytes.size());
}

// Some thousand bytes at the start, whole characters.
std::string_view FirstPiece(std::string_view bytes) {
  constexpr std::size_t kPiece = 65536;
  std::size_t size = 0;
  while (size < bytes.size() && size < kPiece) size += CharacterSize(bytes.substr(size));
  return bytes.substr(0, size);
}

}  // namespace

Decoded FromGb18030(std::string_view bytes) {
  if (IsValidCodePage(kGb18030) == FALSE) throw std::runtime_error("This system can't read GB18030");
  Decoded decoded;
  while (!bytes.empty()) {
    std::string_view piece = FirstPiece(bytes);
    if (!AppendDecoded(piece, decoded.text)) {
      decoded.whole = false;
      while (AppendDecoded(piece.substr(0, CharacterSize(piece)), decoded.text)) {
        piece.remove_prefix(CharacterSize(piece));
      }
      return decoded;
    }
    bytes.remove_prefix(piece.size());
  }
  return decoded;
}

}  // namespace rebate
