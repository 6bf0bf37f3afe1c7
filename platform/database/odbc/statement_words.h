#pragma once

#include <optional>
#include <string_view>

#include "platform/values/types.h"

// What the words of a statement's text tell before it runs. It takes any text, whatever the server makes of it.
namespace rebate::odbc {

struct StatementPart {
  enum class Kind { Word, Literal, NationalLiteral, Other };
  Kind kind;
  std::string_view text;  // of a literal without its outer quotes
};

// The parts of a text in order; comments and white space are none. What stands in brackets or double quotes is Other.
class StatementParts {
 public:
  explicit StatementParts(std::string_view text) : text_(text) {}
  std::optional<StatementPart> Next();
  // Whether a comment was passed over so far.
  bool passed_comment() const { return passed_comment_; }

 private:
  bool SkipComment();
  std::string_view TakeQuoted(std::size_t open, char close);

  std::string_view text_;
  std::size_t at_ = 0;
  bool passed_comment_ = false;
};

struct StatementTraits {
  // It reads and does nothing else, and asking again would give the same unless the data changed.
  bool only_reads = false;
  bool begins_transaction = false;  // may begin one, inside the one that is open
  bool ends_transaction = false;    // may end the one that is open
  bool sets_isolation = false;
};

StatementTraits TraitsOf(std::string_view text);

// Whether the text is one INSERT of one row whose values are all constants (literals, numbers, NULL) or GETDATE(): it
// reads nothing, says nothing but its count, and stands in any text as it stands alone. What is in doubt is none.
bool IsPlainInsert(std::string_view text);

// The contents of the plain literals ('…', not N'…'), joined: what a server reads in its code page.
Text PlainLiterals(std::string_view text);

}  // namespace rebate::odbc
