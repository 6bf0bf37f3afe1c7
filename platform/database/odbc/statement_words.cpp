#include "platform/database/odbc/statement_words.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/values/ascii.h"

namespace rebate::odbc {
namespace {

using Kind = StatementPart::Kind;

bool IsWordCharacter(char c) {
  return IsLetter(c) || IsDigit(c) || c == '_' || c == '@' || c == '#' || c == '$' || !IsAscii(c);
}

// Words that write, that take locks beyond the statement, or that answer otherwise each time.
bool IsBeyondReading(std::string_view word) {
  constexpr std::array<std::string_view, 44> kWords = {
      "alter",    "backup",    "begin",   "commit",     "create",   "declare",  "delete",    "deny",       "drop",
      "exec",     "execute",   "getdate", "getutcdate", "grant",    "holdlock", "if",        "insert",     "into",
      "kill",     "lock",      "merge",   "newid",      "next",     "nextval",  "openquery", "openrowset", "paglock",
      "print",    "raiserror", "rand",    "revoke",     "rollback", "rowlock",  "save",      "set",        "tablock",
      "tablockx", "truncate",  "update",  "updlock",    "use",      "waitfor",  "while",     "xlock"};
  constexpr std::array<std::string_view, 7> kParts = {
      "@@", "current_", "isolation", "serializable", "repeatableread", "sysdate", "sysutc"};
  const auto same = [&](std::string_view one) { return EqualsIgnoreCase(word, one); };
  const auto part = [&](std::string_view one) { return ContainsIgnoreCase(word, one); };
  return std::any_of(kWords.begin(), kWords.end(), same) || std::any_of(kParts.begin(), kParts.end(), part);
}

// A number that is written without a blank in it, and that a server can hold.
bool IsNumber(std::string_view text) {
  constexpr std::size_t kMostDigits = 38;
  std::size_t at = 0;
  const auto skip_sign = [&] { at += at < text.size() && (text[at] == '-' || text[at] == '+') ? 1 : 0; };
  const auto skip_digits = [&] {
    const std::size_t start = at;
    while (at < text.size() && IsDigit(text[at])) ++at;
    return at - start;
  };
  skip_sign();
  std::size_t digits = skip_digits();
  if (at < text.size() && text[at] == '.') {
    ++at;
    digits += skip_digits();
  }
  if (digits == 0 || digits > kMostDigits) return false;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    skip_sign();
    const std::size_t exponent = skip_digits();
    if (exponent == 0 || exponent > 2) return false;
  }
  return at == text.size();
}

// Reads a text part by part.
class InsertReader {
 public:
  explicit InsertReader(std::string_view text) : parts_(text) { Step(); }

  bool Read() {
    return TakeWord("insert") && TakeWord("into") && TakeName() && TakeList(&InsertReader::TakeName) &&
           TakeWord("values") && TakeList(&InsertReader::TakeValue) && !part_ && !parts_.passed_comment();
  }

 private:
  void Step() { part_ = parts_.Next(); }
  bool Take(bool fits) {
    if (fits) Step();
    return fits;
  }
  bool TakeWord(std::string_view word) {
    return Take(part_ && part_->kind == Kind::Word && EqualsIgnoreCase(part_->text, word));
  }
  bool TakeSign(char sign) { return Take(IsSign(sign)); }
  bool IsSign(char sign) const {
    return part_ && part_->kind == Kind::Other && part_->text.size() == 1 && part_->text[0] == sign;
  }
  bool TakeName() {
    return Take(part_ && part_->kind == Kind::Word && !IsDigit(part_->text[0]) && part_->text[0] != '@');
  }

  // ( one , one … )
  bool TakeList(bool (InsertReader::*take_one)()) {
    if (!TakeSign('(')) return false;
    do {
      if (!(this->*take_one)()) return false;
    } while (TakeSign(','));
    return TakeSign(')');
  }

  bool TakeValue() {
    if (!part_) return false;
    if (part_->kind == Kind::Literal || part_->kind == Kind::NationalLiteral) return Take(true);
    if (TakeWord("null")) return true;
    if (TakeWord("getdate")) return TakeSign('(') && TakeSign(')');
    // A number's sign, point and exponent are parts of their own.
    const char* const start = part_->text.data();
    const char* end = start;
    while (part_ && !IsSign(',') && !IsSign(')')) {
      end = part_->text.data() + part_->text.size();
      Step();
    }
    return IsNumber({start, static_cast<std::size_t>(end - start)});
  }

  StatementParts parts_;
  std::optional<StatementPart> part_;  // that comes next
};

}  // namespace

bool IsPlainInsert(std::string_view text) {
  return InsertReader(text).Read();
}

std::optional<StatementPart> StatementParts::Next() {
  const auto skips_blank = [&] { return kWhiteSpace.find(text_[at_]) != std::string_view::npos && ++at_ != 0; };
  while (at_ < text_.size() && (skips_blank() || SkipComment())) {
  }
  if (at_ >= text_.size()) return std::nullopt;
  const std::size_t start = at_;
  const char first = text_[at_];
  if (first == '\'') return StatementPart{Kind::Literal, TakeQuoted(at_, '\'')};
  if (first == '"') return StatementPart{Kind::Other, TakeQuoted(at_, '"')};
  if (first == '[') return StatementPart{Kind::Other, TakeQuoted(at_, ']')};
  if (!IsWordCharacter(first)) return StatementPart{Kind::Other, text_.substr(at_++, 1)};
  while (at_ < text_.size() && IsWordCharacter(text_[at_])) ++at_;
  const std::string_view word = text_.substr(start, at_ - start);
  if (EqualsIgnoreCase(word, "n") && at_ < text_.size() && text_[at_] == '\'') {
    return StatementPart{Kind::NationalLiteral, TakeQuoted(at_, '\'')};
  }
  return StatementPart{Kind::Word, word};
}

// Comments in /* */ nest.
bool StatementParts::SkipComment() {
  const std::string_view rest = text_.substr(at_);
  if (rest.starts_with("--")) {
    passed_comment_ = true;
    at_ = std::min(text_.find('\n', at_), text_.size());
    return true;
  }
  if (!rest.starts_with("/*")) return false;
  passed_comment_ = true;
  std::size_t depth = 0;
  while (at_ < text_.size()) {
    const std::string_view two = text_.substr(at_, 2);
    const bool edge = two == "/*" || two == "*/";
    if (edge) depth += two == "/*" ? 1 : std::size_t(-1);
    at_ += edge ? 2 : 1;
    if (depth == 0) break;
  }
  return true;
}

// What is enclosed from `open` on; a doubled closing character is part of it.
std::string_view StatementParts::TakeQuoted(std::size_t open, char close) {
  at_ = open + 1;
  while (at_ < text_.size()) {
    if (text_[at_] == close) {
      if (at_ + 1 >= text_.size() || text_[at_ + 1] != close) break;
      ++at_;
    }
    ++at_;
  }
  const std::size_t end = std::min(at_, text_.size());
  at_ = end + 1;
  return text_.substr(open + 1, end - open - 1);
}

StatementTraits TraitsOf(std::string_view text) {
  StatementTraits traits;
  StatementParts parts(text);
  std::string_view before;
  bool first = true;
  int begun = 0, committed = 0;
  while (const auto part = parts.Next()) {
    const std::string_view word = part->kind == Kind::Word ? part->text : std::string_view();
    if (std::exchange(first, false)) traits.only_reads = EqualsIgnoreCase(word, "select");
    if (IsBeyondReading(word)) traits.only_reads = false;
    if (EqualsIgnoreCase(before, "begin") &&
        (EqualsIgnoreCase(word, "tran") || EqualsIgnoreCase(word, "transaction"))) {
      ++begun;
    }
    if (EqualsIgnoreCase(word, "commit")) ++committed;
    if (EqualsIgnoreCase(word, "rollback")) traits.ends_transaction = true;
    // What a procedure or a composed text does isn't seen from here.
    if (EqualsIgnoreCase(word, "exec") || EqualsIgnoreCase(word, "execute")) {
      traits.begins_transaction = traits.ends_transaction = traits.sets_isolation = true;
    }
    if (EqualsIgnoreCase(word, "isolation")) traits.sets_isolation = true;
    before = word;
  }
  traits.begins_transaction = traits.begins_transaction || begun > 0;
  traits.ends_transaction = traits.ends_transaction || committed > begun;
  return traits;
}

Text PlainLiterals(std::string_view text) {
  Text literals;
  StatementParts parts(text);
  while (const auto part = parts.Next()) {
    if (part->kind == Kind::Literal) literals += part->text;
  }
  return literals;
}

}  // namespace rebate::odbc
