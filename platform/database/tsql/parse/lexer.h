#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/database/tsql/parse/tree.h"
#include "platform/values/types.h"

namespace rebate::tsql {

enum class TokenKind : std::uint8_t { Word, QuotedName, Variable, Literal, Symbol, End };

struct Token {
  std::string_view
      text;  // as in the batch; of a QuotedName and a string without the quotes (doubled ones stay doubled)
  std::uint32_t offset = 0;   // in the batch, in bytes; of a QuotedName that of its opening quote
  std::uint32_t literal = 0;  // of a Literal: its position among the literals of the batch
  TokenKind kind = TokenKind::End;
  LiteralKind literal_kind = LiteralKind::Integer;  // of a Literal
};

// A literal as it stands in a batch: of a string the inside of its quotes, with doubled quotes still doubled.
struct LiteralToken {
  LiteralKind kind;
  std::string_view text;
  bool has_doubled_quotes = false;
};

// A text literal of more bytes than this may be one of (max). Batches with such a one and with a shorter one in its
// place are of two templates.
inline constexpr std::size_t kLongestPlainText = 4000;

// The value of a string literal.
Text LiteralText(const LiteralToken& literal);

// What a batch is but for its literals, and its literals: one pass over the text, without comments and white space.
// Words stand in the key as written, since a result's columns are named as the statement writes them; each literal
// leaves only its kind, and of a text whether it is a long one. Two batches of one template parse to one tree, provided
// that the literals which the parser reads itself (`Batch::fixed_literals`) are the same, too.
struct BatchTemplate {
  Text key;
  std::vector<LiteralToken> literals;  // they point into the batch
};

// Reads the template of `batch` into `batch_template`, whose memory is used again. Raises the server's error for a
// character or an unclosed quotation mark that can't stand there.
void ReadTemplate(std::string_view batch, BatchTemplate& batch_template);

// A text by which others that differ from it in nothing but their literals are read without looking at each token.
class TextShape {
 public:
  // From now on the shape of `text`, whose literals these are, in their order, pointing into it.
  void Learn(std::string_view text, const std::vector<LiteralToken>& literals);
  // Whether `text` is of this shape, and so of the template of the text that was learnt; then its literals are in
  // `literals`. Raises what ReadTemplate raises of a literal.
  bool Reads(std::string_view text, std::vector<LiteralToken>& literals) const;

 private:
  struct Place {
    std::size_t begin;  // of the literal in the text, with its quotes
    std::size_t end;
    char marker;
  };

  Text text_;
  std::vector<Place> places_;  // empty where nothing was learnt
};

// The tokens of `batch`, an End token last. Raises what ReadTemplate raises.
std::vector<Token> Tokenize(std::string_view batch);

// The name that a QuotedName token encloses, its doubled closing quotes made single.
Text QuotedNameText(std::string_view batch, const Token& token);

}  // namespace rebate::tsql
