#include "platform/database/odbc/character_check.h"

#include <string>

#include "platform/database/odbc/charset.h"
#include "platform/database/odbc/statement_words.h"
#include "platform/values/ascii.h"

namespace rebate::odbc {
namespace {

constexpr int kUtf8CodePage = 65001;

Text NotAscii(std::string_view text) {
  Text others;
  for (const char c : text) {
    if (!IsAscii(c)) others += c;
  }
  return others;
}

// Whether the driver manager brings these characters to the driver and back.
bool Crosses(SQLHANDLE session, std::string_view text) {
  const std::u16string wide = ToWide(text);
  std::u16string echo(wide.size() * 4 + 16, u'\0');
  SQLINTEGER size = 0;
  const SQLRETURN outcome = SQLNativeSqlW(session, ToSql(wide), static_cast<SQLINTEGER>(wide.size()), ToSql(echo),
                                          static_cast<SQLINTEGER>(echo.size()), &size);
  return SQL_SUCCEEDED(outcome) && std::u16string_view(echo).substr(0, wide.size() + 1) == wide + u'\0';
}

[[noreturn]] void Refuse(const Text& why) {
  throw Error(database_error::kStatement, "ODBC", why);
}

// A character out of the range that stands for nothing: bytes which the driver manager could make nothing of.
bool HoldsLooseByte(std::string_view text) {
  for (const char16_t unit : ToWide(text)) {
    if (unit >= 0x80 && unit < 0xA0) return true;
  }
  return false;
}

}  // namespace

CharacterCheck::CharacterCheck(const Session& session)
    : session_(session.get()), carries_all_(Crosses(session_, "促é😀")), locale_charset_(LocaleCharset()) {}

void CharacterCheck::SetServerCodePage(int code_page) {
  server_charset_ = code_page == 0 || code_page == kUtf8CodePage ? Text() : "CP" + std::to_string(code_page);
}

void CharacterCheck::Sending(std::string_view text) const {
  if (!carries_all_) RefuseMangled(text);
  if (server_charset_.empty()) return;
  const Text missing = FirstMissing(NotAscii(PlainLiterals(text)), server_charset_);
  if (missing.empty()) return;
  Refuse("The text holds '" + missing + "', which the database's code page (" + server_charset_.substr(2) +
         ") lacks: the server would store something else in its place.");
}

void CharacterCheck::Received(const RowSet& rows) const {
  if (carries_all_) return;
  for (std::size_t row = 0; row < rows.row_count(); ++row) {
    for (std::size_t field = 0; field < rows.names().size(); ++field) {
      const Variant& cell = rows.Cell(row, field);
      if (cell.IsText()) RefuseMangled(cell.text());
    }
  }
}

void CharacterCheck::RefuseMangled(std::string_view text) const {
  const Text others = NotAscii(text);
  if (others.empty()) return;
  const Text missing = FirstMissing(others, locale_charset_);
  if (missing.empty() && Crosses(session_, others) && !HoldsLooseByte(others)) return;
  const Text what = missing.empty() ? Text("a character beyond 16 bits") : "'" + missing + "'";
  Refuse("The text holds " + what +
         ", which the ODBC driver can't carry: it takes plain texts in the locale of the process (" + locale_charset_ +
         "). Use a Unicode driver, or a UTF-8 locale such as LC_ALL=C.UTF-8.");
}

}  // namespace rebate::odbc
