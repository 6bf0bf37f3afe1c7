#include "platform/values/text_order.h"

#include <algorithm>
#include <array>

#include "platform/values/folding.h"
#include "platform/values/text.h"

#if defined(_WIN32)
#include <windows.h>
#elif defined(REBATE_HAS_ICU)
#include <unicode/ucol.h>
#include <unicode/uversion.h>
#endif

namespace rebate {
namespace {

constexpr std::array<char, 256> MakeSimpleTable() {
  std::array<char, 256> table{};
  for (char c = 'a'; c <= 'z'; ++c) table[static_cast<unsigned char>(c)] = c;
  for (char c = 'A'; c <= 'Z'; ++c) table[static_cast<unsigned char>(c)] = static_cast<char>(c - 'A' + 'a');
  for (char c = '0'; c <= '9'; ++c) table[static_cast<unsigned char>(c)] = c;
  table[' '] = ' ';
  return table;
}

// Latin letters, which are made small, digits and blanks as themselves, and 0 for everything else.
constexpr std::array<char, 256> kSimple = MakeSimpleTable();

char Simple(char c) {
  return kSimple[static_cast<unsigned char>(c)];
}

// Latin letters, digits and blanks stand in every collation as they stand in ASCII, and where two texts of them differ
// first, nothing behind that counts. 2 where others come before a difference.
int CompareSimple(std::string_view left, std::string_view right) {
  constexpr int kUndecided = 2;
  const std::size_t shorter = std::min(left.size(), right.size());
  for (std::size_t at = 0; at < shorter; ++at) {
    const char a = Simple(left[at]);
    const char b = Simple(right[at]);
    if (a == 0 || b == 0) return kUndecided;
    if (a != b) return a < b ? -1 : 1;
  }
  if (left.size() == right.size()) return 0;
  const char next = left.size() > shorter ? left[shorter] : right[shorter];
  if (Simple(next) == 0) return kUndecided;
  return left.size() < right.size() ? -1 : 1;
}

#if defined(_WIN32)

int CompareBySystem(std::string_view left, std::string_view right) {
  const std::u16string a = ToWide(left);
  const std::u16string b = ToWide(right);
  const auto wide = [](const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.data()); };
  const int outcome =
      CompareStringEx(L"zh-CN", NORM_IGNORECASE | NORM_IGNOREWIDTH | NORM_IGNOREKANATYPE, wide(a),
                      static_cast<int>(a.size()), wide(b), static_cast<int>(b.size()), nullptr, nullptr, 0);
  return outcome == 0 ? 0 : outcome - CSTR_EQUAL;
}

#elif defined(REBATE_HAS_ICU)

// Pinyin, with case and width left to those who compare as equal; null where the library lacks its data. Digits and
// Latin letters go before Chinese, which the library's own rules for Chinese put first.
UCollator* OpenPinyin() {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* collator = ucol_open("zh@collation=pinyin", &status);
  if (U_FAILURE(status)) return nullptr;
  ucol_setStrength(collator, UCOL_SECONDARY);
  const std::int32_t order[] = {UCOL_REORDER_CODE_NONE};
  ucol_setReorderCodes(collator, order, 1, &status);
  if (U_SUCCESS(status)) return collator;
  ucol_close(collator);
  return nullptr;
}

int CompareBySystem(std::string_view left, std::string_view right) {
  static const UCollator* const pinyin = OpenPinyin();  // for good: texts compare until the process ends
  if (pinyin == nullptr) return 0;
  UErrorCode status = U_ZERO_ERROR;
  return ucol_strcollUTF8(pinyin, left.data(), static_cast<std::int32_t>(left.size()), right.data(),
                          static_cast<std::int32_t>(right.size()), &status);
}

#else

int CompareBySystem(std::string_view, std::string_view) {
  return 0;
}

#endif

}  // namespace

int CompareInOrder(std::string_view left, std::string_view right) {
  if (left == right) return 0;
  left = ComparedPart(left);
  right = ComparedPart(right);
  const int simple = CompareSimple(left, right);
  if (simple >= -1 && simple <= 1) return simple;
  const int stable = CompareText(left, right);
  if (stable == 0) return 0;
  const int order = CompareBySystem(left, right);
  return order == 0 ? stable : order < 0 ? -1 : 1;
}

std::optional<std::uint64_t> OrderPrefix(std::string_view text) {
  text = ComparedPart(text);
  std::uint64_t prefix = 0;
  for (std::size_t at = 0; at < sizeof prefix; ++at) {
    const char simple = at < text.size() ? Simple(text[at]) : '\0';
    if (at < text.size() && simple == 0) return std::nullopt;
    prefix = prefix << 8 | static_cast<unsigned char>(simple);
  }
  return prefix;
}

Text OrderVersion() {
#if defined(REBATE_HAS_ICU) && !defined(_WIN32)
  UVersionInfo version;
  char text[U_MAX_VERSION_STRING_LENGTH];
  u_getVersion(version);
  u_versionToString(version, text);
  return Text("ICU ") + text;
#else
  return {};
#endif
}

}  // namespace rebate
