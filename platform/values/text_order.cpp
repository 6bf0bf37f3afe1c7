#include "platform/values/text_order.h"

#include <algorithm>

#include "platform/values/ascii.h"
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

// Latin letters, digits and blanks stand in every collation as they stand in ASCII, and where two texts of them differ
// first, nothing behind that counts. 2 where others come before a difference.
int CompareSimple(std::string_view left, std::string_view right) {
  constexpr int kUndecided = 2;
  const auto simple = [](char c) { return IsLetter(c) || IsDigit(c) || c == ' '; };
  const std::size_t shorter = std::min(left.size(), right.size());
  for (std::size_t at = 0; at < shorter; ++at) {
    if (!simple(left[at]) || !simple(right[at])) return kUndecided;
    const char a = AsciiLower(left[at]);
    const char b = AsciiLower(right[at]);
    if (a != b) return a < b ? -1 : 1;
  }
  if (left.size() == right.size()) return 0;
  const char next = left.size() > shorter ? left[shorter] : right[shorter];
  if (!simple(next)) return kUndecided;
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
  left = ComparedPart(left);
  right = ComparedPart(right);
  const int simple = CompareSimple(left, right);
  if (simple >= -1 && simple <= 1) return simple;
  const int stable = CompareText(left, right);
  if (stable == 0) return 0;
  const int order = CompareBySystem(left, right);
  return order == 0 ? stable : order < 0 ? -1 : 1;
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
