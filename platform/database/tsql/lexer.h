#pragma once

#include <string_view>
#include <vector>

#include "platform/automation/types.h"
#include "platform/database/tsql/ast.h"

namespace rebate::tsql {

enum class TokenKind { Word, QuotedName, Variable, Literal, Symbol, End };

struct Token {
  TokenKind kind;
  std::string_view text;  // as in the batch; of a QuotedName without its brackets or double quotes (']]' and '""' stay)
  LiteralKind literal = LiteralKind::Integer;
  std::size_t offset = 0;  // in the batch, in bytes
};

// A literal as it stands in a batch: of a string the inside of its quotes, with doubled quotes still doubled.
struct LiteralToken {
  LiteralKind kind;
  std::string_view text;
  bool has_doubled_quotes = false;
};

// The value of a string literal.
Text LiteralText(const LiteralToken& literal);

// What a batch is but for its literals, and its literals: one pass over the text, without comments and white space.
// Words are folded to lower case; each literal leaves only its kind. Two batches with one shape parse to one tree.
struct Shape {
  Text key;
  std::vector<LiteralToken> literals;  // they point into the batch
};

// Reads the shape of `batch` into `shape`, whose memory is used again. Raises the server's error for a character or an
// unclosed quotation mark that can't stand there.
void ReadShape(std::string_view batch, Shape& shape);

// The tokens of `batch`, an End token last.
std::vector<Token> Tokenize(std::string_view batch);

}  // namespace rebate::tsql
