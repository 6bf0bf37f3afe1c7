#include "platform/database/tsql/parse/parser.h"

#include <algorithm>
#include <limits>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/parse/parser_state.h"
#include "platform/database/tsql/parse/syntax_error.h"

namespace rebate::tsql {
namespace {

constexpr int kDeepest = 200;                // levels of brackets, queries in queries, blocks in blocks
constexpr std::size_t kLongestChain = 1000;  // operators of one level, none of them in brackets
constexpr std::size_t kLongestWay = kLongestChain + kDeepest;  // operators above one another, brackets or not
constexpr std::string_view kTooDeep =
    "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.";

struct TypeName {
  std::string_view name;
  TypeKind kind;
  int longest;  // of a character type, in characters
};
constexpr TypeName kTypes[] = {
    {"bit", TypeKind::Bit, 0},
    {"tinyint", TypeKind::TinyInt, 0},
    {"smallint", TypeKind::SmallInt, 0},
    {"int", TypeKind::Int, 0},
    {"integer", TypeKind::Int, 0},
    {"bigint", TypeKind::BigInt, 0},
    {"decimal", TypeKind::Decimal, 0},
    {"dec", TypeKind::Decimal, 0},
    {"numeric", TypeKind::Decimal, 0},
    {"money", TypeKind::Money, 0},
    {"smallmoney", TypeKind::SmallMoney, 0},
    {"float", TypeKind::Float, 0},
    {"real", TypeKind::Real, 0},
    {"char", TypeKind::Char, 8000},
    {"character", TypeKind::Char, 8000},
    {"varchar", TypeKind::VarChar, 8000},
    {"nchar", TypeKind::NChar, 4000},
    {"nvarchar", TypeKind::NVarChar, 4000},
    {"date", TypeKind::Date, 0},
    {"datetime", TypeKind::DateTime, 0},
    {"smalldatetime", TypeKind::SmallDateTime, 0},
    {"datetime2", TypeKind::DateTime2, 0},
};
constexpr std::string_view kForeignTypes[] = {
    "time",        "datetimeoffset", "binary",    "varbinary", "uniqueidentifier", "image",       "xml",
    "sql_variant", "rowversion",     "timestamp", "geometry",  "geography",        "hierarchyid", "json"};
constexpr int kHighestPrecision = 38;
constexpr int kDefaultPrecision = 18;
constexpr int kDefaultCastLength = 30;
constexpr int kHighestFloatBits = 53;
constexpr int kRealBits = 24;  // and fewer
constexpr int kFinestSecond = 7;

}  // namespace

Batch Parse(std::string_view batch) {
  return Parser(batch).ParseBatch();
}

Batch Parser::ParseBatch() {
  Batch batch;
  while (TakeSymbol(";")) {
  }
  while (!AtEnd()) {
    ParseStatement(batch.statements);
    CheckEndBefore();
  }
  std::sort(fixed_literals_.begin(), fixed_literals_.end());
  fixed_literals_.erase(std::unique(fixed_literals_.begin(), fixed_literals_.end()), fixed_literals_.end());
  batch.fixed_literals = std::move(fixed_literals_);
  return batch;
}

Parser::Nesting::Nesting(Parser& parser) : parser_(parser) {
  if (parser_.depth_ >= kDeepest) ThrowSyntax(kTooDeep);
  ++parser_.depth_;
}

void Parser::Chain::Grow() {
  ++length_;
  if (length_ > kLongestChain || parser_.chained_ + length_ > kLongestWay) ThrowSyntax(kTooDeep);
}

// ---- the cursor ----

const Token& Parser::Peek(std::size_t ahead) const {
  return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
}

const Token& Parser::Take() {
  const Token& token = Peek();
  if (token.kind != TokenKind::End) ++at_;
  return token;
}

bool Parser::IsWord(std::string_view word, std::size_t ahead) const {
  const Token& token = Peek(ahead);
  return token.kind == TokenKind::Word && token.text.size() == word.size() && EqualsIgnoreCase(token.text, word);
}

bool Parser::IsAnyWord(std::initializer_list<std::string_view> words, std::size_t ahead) const {
  return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return IsWord(word, ahead); });
}

bool Parser::IsSymbol(std::string_view symbol, std::size_t ahead) const {
  const Token& token = Peek(ahead);
  return token.kind == TokenKind::Symbol && token.text == symbol;
}

bool Parser::IsQuoted(const Token& token) {
  return token.kind == TokenKind::QuotedName ||
         (token.kind == TokenKind::Literal && token.literal_kind >= LiteralKind::String);
}

bool Parser::IsString(std::size_t ahead) const {
  const Token& token = Peek(ahead);
  return token.kind == TokenKind::Literal && IsQuoted(token);
}

bool Parser::IsName(std::size_t ahead) const {
  const Token& token = Peek(ahead);
  return token.kind == TokenKind::QuotedName || (token.kind == TokenKind::Word && !IsReserved(token.text));
}

bool Parser::TakeWord(std::string_view word) {
  const bool there = IsWord(word);
  if (there) ++at_;
  return there;
}

bool Parser::TakeSymbol(std::string_view symbol) {
  const bool there = IsSymbol(symbol);
  if (there) ++at_;
  return there;
}

void Parser::ExpectWord(std::string_view word) {
  if (!TakeWord(word)) FailHere();
}

void Parser::ExpectSymbol(std::string_view symbol) {
  if (!TakeSymbol(symbol)) FailHere();
}

void Parser::FailHere() const {
  // At its end a batch is wrong near the last thing that it says.
  if (AtEnd()) ThrowNear(at_ > 0 ? tokens_[at_ - 1].text : std::string_view());
  const Token& token = Peek();
  ThrowNear(token.text, token.kind == TokenKind::Word && IsReserved(token.text));
}

void Parser::RefuseWord(std::string_view word) const {
  if (IsWord(word)) ThrowUnsupported(word);
}

std::size_t Parser::TakeFixedLiteral() {
  fixed_literals_.push_back(Peek().literal);
  return Take().literal;
}

// ---- names and types ----

Text Parser::ParseName() {
  if (!IsName()) FailHere();
  const Token& token = Take();
  return token.kind == TokenKind::QuotedName ? QuotedNameText(batch_, token) : Text(token.text);
}

std::vector<Text> Parser::ParseNameParts() {
  std::vector<Text> parts{ParseName()};
  while (TakeSymbol(".")) {
    parts.push_back(IsSymbol(".") ? Text() : ParseName());
  }
  return parts;
}

ObjectName Parser::ParseObjectName() {
  std::vector<Text> parts = ParseNameParts();
  if (parts.size() > 3) ThrowUnsupported("linked server");
  ObjectName name;
  name.name = std::move(parts.back());
  if (name.name.starts_with("##")) ThrowUnsupported("global temporary table");
  if (parts.size() >= 2) name.owner = std::move(parts[parts.size() - 2]);
  if (parts.size() == 3) name.database = std::move(parts[0]);
  return name;
}

Text Parser::ParseVariable() {
  if (Peek().kind != TokenKind::Variable) FailHere();
  return Text(Take().text);
}

Text Parser::ParseAlias() {
  const bool explicit_alias = TakeWord("as");
  if (IsString()) {
    const Token& token = Peek();
    TakeFixedLiteral();
    return LiteralText({token.literal_kind, token.text, token.text.find('\'') != std::string_view::npos});
  }
  if (IsName()) return ParseName();
  if (explicit_alias) FailHere();
  return {};
}

int Parser::ParsePositive(int highest) {
  const Token& token = Peek();
  if (token.kind != TokenKind::Literal || token.literal_kind != LiteralKind::Integer) FailHere();
  TakeFixedLiteral();
  const int value = WholeNumber<int>(token.text).value_or(0);
  if (value == 0) ThrowSyntax("Length or precision 0 is invalid.");
  if (value > highest) {
    ThrowSyntax("The size (" + Text(token.text) + ") given exceeds the maximum allowed (" + std::to_string(highest) +
                ").");
  }
  return value;
}

std::int64_t Parser::ParseSignedInteger() {
  const bool negative = TakeSymbol("-");
  if (!negative) TakeSymbol("+");
  const Token& token = Peek();
  if (token.kind != TokenKind::Literal) FailHere();
  const std::optional<std::int64_t> value = WholeNumber<std::int64_t>(token.text);
  if (!value) FailHere();
  TakeFixedLiteral();
  return negative ? -*value : *value;
}

Text Parser::ParseTypeName() {
  if (TakeWord("double")) {
    ExpectWord("precision");
    return "float";
  }
  if (!TakeWord("national")) return ParseName();
  if (!IsAnyWord({"char", "character", "text"})) FailHere();
  if (TakeWord("text")) return "ntext";
  Take();
  return "nchar";
}

DataType Parser::ParseType(bool in_cast) {
  const Text name = ParseTypeName();
  for (std::string_view foreign : kForeignTypes) {
    if (EqualsIgnoreCase(name, foreign)) ThrowUnsupported(foreign);
  }
  if (EqualsIgnoreCase(name, "text")) return {TypeKind::VarChar, DataType::kMaxLength};
  if (EqualsIgnoreCase(name, "ntext")) return {TypeKind::NVarChar, DataType::kMaxLength};
  if (EqualsIgnoreCase(name, "sysname")) return {TypeKind::NVarChar, 128};
  const auto* known = std::find_if(std::begin(kTypes), std::end(kTypes),
                                   [&](const TypeName& type) { return EqualsIgnoreCase(name, type.name); });
  if (known == std::end(kTypes)) ThrowSyntax("Cannot find data type " + name + ".");

  DataType type{known->kind};
  if (known->longest > 0) {
    ParseLength(type, known->longest, in_cast);
  } else if (type.kind == TypeKind::Decimal) {
    ParsePrecision(type);
  } else if (type.kind == TypeKind::DateTime2) {
    ParseSecondDigits(type);
  } else if (type.kind == TypeKind::Float && TakeSymbol("(")) {
    if (ParsePositive(kHighestFloatBits) <= kRealBits) type.kind = TypeKind::Real;
    ExpectSymbol(")");
  }
  return type;
}

void Parser::ParseLength(DataType& type, int longest, bool in_cast) {
  if (TakeWord("varying")) type.kind = type.kind == TypeKind::Char ? TypeKind::VarChar : TypeKind::NVarChar;
  type.length = in_cast ? kDefaultCastLength : 1;
  if (!TakeSymbol("(")) return;
  const bool varies = type.kind == TypeKind::VarChar || type.kind == TypeKind::NVarChar;
  type.length = varies && TakeWord("max") ? DataType::kMaxLength : ParsePositive(longest);
  ExpectSymbol(")");
}

void Parser::ParsePrecision(DataType& type) {
  type.precision = kDefaultPrecision;
  if (!TakeSymbol("(")) return;
  type.precision = ParsePositive(kHighestPrecision);
  if (TakeSymbol(",")) {
    const std::int64_t scale = ParseSignedInteger();
    if (scale < 0 || scale > type.precision) {
      ThrowSyntax("The scale (" + std::to_string(scale) + ") must be less than or equal to the precision (" +
                  std::to_string(type.precision) + ").");
    }
    type.scale = static_cast<int>(scale);
  }
  ExpectSymbol(")");
}

void Parser::ParseSecondDigits(DataType& type) {
  type.scale = kFinestSecond;
  if (!TakeSymbol("(")) return;
  const std::int64_t digits = ParseSignedInteger();
  if (digits < 0 || digits > kFinestSecond) {
    ThrowSyntax("Specified scale " + std::to_string(digits) + " is invalid.");
  }
  type.scale = static_cast<int>(digits);
  ExpectSymbol(")");
}

}  // namespace rebate::tsql
