#include "platform/database/tsql/parse/lexer.h"

#include <array>
#include <cstring>

#include "platform/automation/error.h"
#include "platform/database/tsql/parse/syntax_error.h"

namespace rebate::tsql {
namespace {

// What a byte can be. Every byte outside ASCII is part of a letter.
enum CharacterClass : std::uint8_t {
  kBlank = 1,      // white space, and the control characters, which count as such
  kWordStart = 2,  // begins a word
  kWordPart = 4,   // continues one
  kDigit = 8,
  kOperator = 16,  // may join with the next symbol to one operator
  kSymbol = 32,
  kNameQuote = 64,  // opens and closes a name, and is a part of it where doubled
};

constexpr std::array<std::uint8_t, 256> MakeCharacterTable() {
  std::array<std::uint8_t, 256> table{};
  for (unsigned c = 1; c <= ' '; ++c) table[c] = kBlank;
  for (unsigned c = 'a'; c <= 'z'; ++c) table[c] = kWordStart | kWordPart;
  for (unsigned c = 'A'; c <= 'Z'; ++c) table[c] = kWordStart | kWordPart;
  for (unsigned c = 0x80; c <= 0xFF; ++c) table[c] = kWordStart | kWordPart;
  for (unsigned char c : {'_', '#', '@'}) table[c] = kWordStart | kWordPart;
  table['$'] = kWordPart;
  for (unsigned c = '0'; c <= '9'; ++c) table[c] = kDigit | kWordPart;
  for (unsigned char c : {'<', '>', '=', '!'}) table[c] = kSymbol | kOperator;
  for (unsigned char c : {'(', ')', ',', ';', '.', '+', '-', '*', '/', '%', '&', '|', '^', '~', ':'})
    table[c] = kSymbol;
  table['"'] = kNameQuote;
  return table;
}

constexpr std::array<std::uint8_t, 256> kCharacters = MakeCharacterTable();

// What some editors put in front of a text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

inline std::uint8_t ClassOf(char c) {
  return kCharacters[static_cast<unsigned char>(c)];
}
inline bool Is(char c, unsigned classes) {
  return (ClassOf(c) & classes) != 0;
}

// A token with its bounds in the batch, the quotes included.
struct Lexeme {
  const char* begin = nullptr;
  const char* end = nullptr;
  std::string_view text;
  TokenKind kind = TokenKind::End;
  LiteralKind literal_kind = LiteralKind::Integer;
  bool doubled_quotes = false;
};

// Walks over a batch token by token: the only place that knows where one ends.
class Scanner {
 public:
  explicit Scanner(std::string_view batch)
      : begin_(batch.data()), at_(batch.data()), end_(batch.data() + batch.size()) {
    if (batch.starts_with(kByteOrderMark)) at_ += kByteOrderMark.size();
  }

  // Reads the token behind white space and comments into `lexeme`; false at the end of the batch. Every statement that
  // is sent goes through the loops around it, which it makes a third faster to be part of.
  [[gnu::always_inline]] bool Next(Lexeme& lexeme) {
    SkipBlanks();
    if (at_ == end_) return false;
    lexeme.begin = at_;
    const std::uint8_t character = ClassOf(*at_);
    if ((character & kWordStart) != 0) {
      ReadWord(lexeme);
    } else if ((character & kDigit) != 0 || (*at_ == '.' && at_ + 1 < end_ && Is(at_[1], kDigit))) {
      ReadNumber(lexeme);
    } else if ((character & kSymbol) != 0) {
      ReadSymbol(lexeme);
    } else if (*at_ == '\'') {
      ReadString(lexeme, LiteralKind::String);
    } else if (*at_ == '[' || *at_ == '"') {
      lexeme.kind = TokenKind::QuotedName;
      ReadQuoted(lexeme, *at_ == '[' ? ']' : '"');
    } else {
      ThrowNear(std::string_view(at_, 1));
    }
    lexeme.end = at_;
    return true;
  }

  // Reads the literal at the offset, where one begins there, and gives the offset behind it; else 0.
  std::size_t NextLiteral(std::size_t offset, Lexeme& lexeme) {
    at_ = begin_ + offset;
    lexeme.begin = at_;
    if (at_ == end_) return 0;
    if (*at_ == '\'') {
      ReadString(lexeme, LiteralKind::String);
    } else if (*at_ == 'N' || *at_ == 'n') {
      if (at_ + 1 == end_ || at_[1] != '\'') return 0;
      ReadWord(lexeme);
    } else if (Is(*at_, kDigit) || (*at_ == '.' && at_ + 1 < end_ && Is(at_[1], kDigit))) {
      ReadNumber(lexeme);
    } else {
      return 0;
    }
    return static_cast<std::size_t>(at_ - begin_);
  }

  std::size_t OffsetOf(const Lexeme& lexeme) const { return static_cast<std::size_t>(lexeme.begin - begin_); }

 private:
  void SkipBlanks() {
    while (at_ < end_) {
      if (Is(*at_, kBlank)) {
        at_ = BehindAll(at_ + 1, kBlank);
      } else if (*at_ == '-' && at_ + 1 < end_ && at_[1] == '-') {
        const void* line_end = std::memchr(at_, '\n', static_cast<std::size_t>(end_ - at_));
        at_ = line_end != nullptr ? static_cast<const char*>(line_end) : end_;
      } else if (*at_ == '/' && at_ + 1 < end_ && at_[1] == '*') {
        SkipComment();
      } else {
        return;
      }
    }
  }

  void SkipComment() {
    int depth = 0;
    for (; at_ + 1 < end_; ++at_) {
      if (at_[0] == '/' && at_[1] == '*') {
        ++depth;
        ++at_;
      } else if (at_[0] == '*' && at_[1] == '/') {
        ++at_;
        if (--depth == 0) {
          ++at_;
          return;
        }
      }
    }
    ThrowSyntax("Missing end comment mark '*/'.");
  }

  void ReadWord(Lexeme& lexeme) {
    if ((*at_ == 'N' || *at_ == 'n') && at_ + 1 < end_ && at_[1] == '\'') {
      ++at_;
      ReadString(lexeme, LiteralKind::NationalString);
      return;
    }
    const char* word = at_;
    at_ = BehindAll(at_ + 1, kWordPart);
    lexeme.text = {word, static_cast<std::size_t>(at_ - word)};
    lexeme.kind = *word == '@' ? TokenKind::Variable : TokenKind::Word;
  }

  // Where the first byte at or behind `from` stands that isn't of the classes.
  const char* BehindAll(const char* from, unsigned classes) const {
    const char* end = end_;
    while (from < end && Is(*from, classes)) ++from;
    return from;
  }

  void SkipDigits() { at_ = BehindAll(at_, kDigit); }

  void ReadNumber(Lexeme& lexeme) {
    const char* number = at_;
    lexeme.kind = TokenKind::Literal;
    lexeme.literal_kind = LiteralKind::Integer;
    lexeme.doubled_quotes = false;
    SkipDigits();
    if (at_ < end_ && *at_ == '.') {
      lexeme.literal_kind = LiteralKind::Decimal;
      ++at_;
      SkipDigits();
    }
    if (at_ < end_ && (*at_ == 'e' || *at_ == 'E')) {
      const char* exponent = at_ + 1;
      if (exponent < end_ && (*exponent == '+' || *exponent == '-')) ++exponent;
      if (exponent < end_ && Is(*exponent, kDigit)) {
        lexeme.literal_kind = LiteralKind::Float;
        at_ = exponent;
        SkipDigits();
      }
    }
    lexeme.text = {number, static_cast<std::size_t>(at_ - number)};
    if (lexeme.literal_kind == LiteralKind::Integer) CheckInteger(lexeme);
  }

  void CheckInteger(Lexeme& lexeme) {
    if (lexeme.text == "0" && at_ < end_ && (*at_ == 'x' || *at_ == 'X')) {
      at_ = BehindAll(at_, kWordPart);
      ThrowUnsupported(std::string_view(lexeme.begin, static_cast<std::size_t>(at_ - lexeme.begin)));
    }
    if (lexeme.text.size() < 10) return;
    std::string_view digits = lexeme.text;
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.size() > 10 || (digits.size() == 10 && digits > "2147483647"))
      lexeme.literal_kind = LiteralKind::Decimal;
  }

  void ReadString(Lexeme& lexeme, LiteralKind kind) {
    lexeme.kind = TokenKind::Literal;
    lexeme.literal_kind = kind;
    ReadQuoted(lexeme, '\'');
  }

  // Reads from the opening quote under the cursor to behind the closing one.
  void ReadQuoted(Lexeme& lexeme, char closing) {
    lexeme.doubled_quotes = false;
    const char* inside = ++at_;
    while (true) {
      const void* quote = std::memchr(at_, closing, static_cast<std::size_t>(end_ - at_));
      if (quote == nullptr) ThrowUnclosed(std::string_view(inside, static_cast<std::size_t>(end_ - inside)));
      at_ = static_cast<const char*>(quote) + 1;
      if (at_ == end_ || *at_ != closing) break;
      lexeme.doubled_quotes = true;
      ++at_;
    }
    lexeme.text = {inside, static_cast<std::size_t>(at_ - inside - 1)};
  }

  void ReadSymbol(Lexeme& lexeme) {
    const char* symbol = at_++;
    if (at_ < end_) {
      const bool joins = (*symbol == '<' && (*at_ == '=' || *at_ == '>')) || (*symbol == '>' && *at_ == '=') ||
                         (*symbol == '!' && (*at_ == '=' || *at_ == '<' || *at_ == '>'));
      if (joins) ++at_;
    }
    lexeme.text = {symbol, static_cast<std::size_t>(at_ - symbol)};
    lexeme.kind = TokenKind::Symbol;
  }

  const char* begin_;
  const char* at_;
  const char* end_;
};

// A byte of the key that stands for a literal of the kind. No token begins with it, white space being dropped.
char MarkerOf(LiteralKind kind, std::size_t size) {
  constexpr int kKinds = 5;
  const bool is_long = kind >= LiteralKind::String && size > kLongestPlainText;
  return static_cast<char>(1 + static_cast<int>(kind) + (is_long ? kKinds : 0));
}

Text WithSingle(std::string_view text, char doubled) {
  Text single;
  single.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    single += text[at];
    if (text[at] == doubled) ++at;
  }
  return single;
}

}  // namespace

Text LiteralText(const LiteralToken& literal) {
  return literal.has_doubled_quotes ? WithSingle(literal.text, '\'') : Text(literal.text);
}

Text QuotedNameText(std::string_view batch, const Token& token) {
  return WithSingle(token.text, batch[token.offset] == '[' ? ']' : '"');
}

void ReadTemplate(std::string_view batch, BatchTemplate& batch_template) {
  batch_template.literals.clear();
  // A token leaves at most its own length, and a separator stands for at least one byte that was dropped.
  batch_template.key.resize(batch.size());
  char* out = batch_template.key.data();
  // What stands in the key as it does in the batch is copied in one piece: [piece, last_end).
  const char* piece = batch.data();
  const char* last_end = batch.data();
  std::uint8_t joinable = 0;  // the classes by which the last token would run together with the next
  const auto copy_piece = [&] {
    const std::size_t length = static_cast<std::size_t>(last_end - piece);
    if (length > 0) std::memcpy(out, piece, length);
    out += length;
  };

  Scanner scanner(batch);
  Lexeme lexeme;
  while (scanner.Next(lexeme)) {
    if (lexeme.kind == TokenKind::Literal) {
      copy_piece();
      batch_template.literals.push_back({lexeme.literal_kind, lexeme.text, lexeme.doubled_quotes});
      *out++ = MarkerOf(lexeme.literal_kind, lexeme.text.size());
      piece = lexeme.end;
      joinable = 0;
    } else {
      if (lexeme.begin != last_end) {
        const bool separate = (ClassOf(*lexeme.begin) & joinable) != 0;
        if (!separate || lexeme.begin - last_end > 1 || *last_end != ' ') {
          copy_piece();
          if (separate) *out++ = ' ';
          piece = lexeme.begin;
        }
      }
      joinable = ClassOf(lexeme.end[-1]) & (kWordPart | kOperator | kNameQuote);
    }
    last_end = lexeme.end;
  }
  copy_piece();
  batch_template.key.resize(static_cast<std::size_t>(out - batch_template.key.data()));
}

void TextShape::Learn(std::string_view text, const std::vector<LiteralToken>& literals) {
  text_ = text;
  places_.clear();
  for (const LiteralToken& literal : literals) {
    Place place{static_cast<std::size_t>(literal.text.data() - text.data()), 0,
                MarkerOf(literal.kind, literal.text.size())};
    place.end = place.begin + literal.text.size();
    if (literal.kind >= LiteralKind::String) {
      place.begin -= literal.kind == LiteralKind::NationalString ? 2 : 1;
      ++place.end;
    }
    places_.push_back(place);
  }
}

// What stands between the literals is the same, byte for byte. So tokens end where they end in the text that was
// learnt: of a literal only its own end is looked for, and nothing in front of one runs together with it.
bool TextShape::Reads(std::string_view text, std::vector<LiteralToken>& literals) const {
  if (places_.empty()) return false;
  literals.clear();
  Scanner scanner(text);
  Lexeme lexeme;
  std::size_t at = 0;
  std::size_t own_at = 0;
  for (const Place& place : places_) {
    const std::size_t size = place.begin - own_at;
    if (text.size() - at <= size || std::memcmp(text.data() + at, text_.data() + own_at, size) != 0) return false;
    // What stands before a point may run together with a digit.
    if ((text[at + size] == '.') != (text_[place.begin] == '.')) return false;
    at = scanner.NextLiteral(at + size, lexeme);
    if (at == 0 || MarkerOf(lexeme.literal_kind, lexeme.text.size()) != place.marker) return false;
    literals.push_back({lexeme.literal_kind, lexeme.text, lexeme.doubled_quotes});
    own_at = place.end;
  }
  return text.substr(at) == std::string_view(text_).substr(own_at);
}

std::vector<Token> Tokenize(std::string_view batch) {
  std::vector<Token> tokens;
  tokens.reserve(batch.size() / 4 + 1);
  Scanner scanner(batch);
  Lexeme lexeme;
  std::uint32_t literals = 0;
  while (scanner.Next(lexeme)) {
    Token token{lexeme.text, static_cast<std::uint32_t>(scanner.OffsetOf(lexeme)), 0, lexeme.kind, {}};
    if (lexeme.kind == TokenKind::Literal) {
      token.literal = literals++;
      token.literal_kind = lexeme.literal_kind;
    }
    tokens.push_back(token);
  }
  tokens.push_back({{}, static_cast<std::uint32_t>(batch.size()), 0, TokenKind::End, {}});
  return tokens;
}

}  // namespace rebate::tsql
