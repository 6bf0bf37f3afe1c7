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

}  // namespace

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
    at_ = std::min(text_.find('\n', at_), text_.size());
    return true;
  }
  if (!rest.starts_with("/*")) return false;
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
