#include "platform/database/tsql/parse/batch_splitter.h"

#include <algorithm>
#include <utility>

#include "platform/values/ascii.h"

namespace rebate::tsql {
namespace {

enum class Word { Other, Begin, End, Case, If, Else, With, Statement, Whole };

struct Spelling {
  std::string_view text;
  Word word;
};

// A select begins no part of its own: it may belong to the insert before it.
constexpr Spelling kSpellings[] = {{"alter", Word::Whole},        {"begin", Word::Begin},
                                   {"break", Word::Whole},        {"case", Word::Case},
                                   {"commit", Word::Statement},   {"continue", Word::Whole},
                                   {"create", Word::Whole},       {"declare", Word::Whole},
                                   {"delete", Word::Statement},   {"drop", Word::Whole},
                                   {"else", Word::Else},          {"end", Word::End},
                                   {"goto", Word::Whole},         {"if", Word::If},
                                   {"insert", Word::Statement},   {"merge", Word::Whole},
                                   {"print", Word::Statement},    {"raiserror", Word::Whole},
                                   {"return", Word::Whole},       {"rollback", Word::Statement},
                                   {"save", Word::Whole},         {"throw", Word::Whole},
                                   {"truncate", Word::Statement}, {"try", Word::Whole},
                                   {"update", Word::Statement},   {"while", Word::If},
                                   {"with", Word::With}};
constexpr std::size_t kLongestSpelling = 9;

Word WordOf(std::string_view text) {
  if (text.size() < 2 || text.size() > kLongestSpelling) return Word::Other;
  for (const Spelling& spelling : kSpellings) {
    if (spelling.text.size() == text.size() && EqualsIgnoreCase(spelling.text, text)) return spelling.word;
  }
  return Word::Other;
}

bool IsWordPart(char c) {
  return IsLetter(c) || IsDigit(c) || c == '_' || c == '#' || c == '@' || c == '$' || !IsAscii(c);
}

// Walks over the words of a batch that stand outside of quotes, comments and parentheses.
class WordReader {
 public:
  explicit WordReader(std::string_view text) : text_(text) {}

  // False at the end.
  bool Next(std::string_view& word) {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (IsWordPart(c)) {
        const std::size_t start = at_;
        while (at_ < text_.size() && IsWordPart(text_[at_])) ++at_;
        word = text_.substr(start, at_ - start);
        if (depth_ == 0) return true;
      } else {
        SkipOther(c);
      }
    }
    return false;
  }

  // Whether an opening parenthesis is next, which stays there.
  bool BeforeParenthesis() {
    while (at_ < text_.size() && AtBlank()) SkipOther(text_[at_]);
    return at_ < text_.size() && text_[at_] == '(';
  }

  std::size_t OffsetOf(std::string_view word) const { return static_cast<std::size_t>(word.data() - text_.data()); }

 private:
  // Whether white space or a comment stands at the cursor.
  bool AtBlank() const {
    return static_cast<unsigned char>(text_[at_]) <= ' ' || text_.substr(at_).starts_with("--") ||
           text_.substr(at_).starts_with("/*");
  }

  void SkipOther(char c) {
    if (c == '\'' || c == '"' || c == '[') {
      // A doubled quote reads as two strings side by side.
      const std::size_t end = text_.find(c == '[' ? ']' : c, at_ + 1);
      at_ = end == std::string_view::npos ? text_.size() : end + 1;
    } else if (text_.substr(at_).starts_with("--")) {
      at_ = std::min(text_.find('\n', at_), text_.size());
    } else if (text_.substr(at_).starts_with("/*")) {
      SkipComment();
    } else {
      if (c == '(') ++depth_;
      if (c == ')') --depth_;
      ++at_;
    }
  }

  void SkipComment() {
    int depth = 0;
    do {
      if (text_.substr(at_).starts_with("/*")) {
        ++depth;
        at_ += 2;
      } else if (text_.substr(at_).starts_with("*/")) {
        --depth;
        at_ += 2;
      } else {
        ++at_;
      }
    } while (depth > 0 && at_ < text_.size());
    at_ = std::min(at_, text_.size());
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

// Knows, word by word, whether a statement begins on the top level of the batch.
class Boundaries {
 public:
  bool Begins(Word word) {
    switch (word) {
      case Word::Case:
        ++cases_;
        return false;
      case Word::End:
        if (cases_ > 0) {
          --cases_;
        } else if (blocks_ > 0) {
          --blocks_;
        }
        return false;
      case Word::Else:
        if (cases_ == 0 && blocks_ == 0) body_due_ = true;
        return false;
      case Word::If: {
        const bool begins = StatementBegins();
        if (blocks_ == 0) body_due_ = true;
        return begins;
      }
      case Word::Begin: {
        const bool begins = StatementBegins();
        ++blocks_;
        return begins;
      }
      case Word::Statement:
        return StatementBegins();
      default:
        return false;
    }
  }

  // The `begin` before was that of a transaction.
  void LeaveBlock() { --blocks_; }

 private:
  bool StatementBegins() {
    if (blocks_ > 0) return false;
    return !std::exchange(body_due_, false);
  }

  int cases_ = 0;
  int blocks_ = 0;
  bool body_due_ = false;  // the next statement is what an `if` or `else` runs
};

bool IsTransactionWord(std::string_view word) {
  return EqualsIgnoreCase(word, "tran") || EqualsIgnoreCase(word, "transaction");
}

}  // namespace

std::vector<std::string_view> SplitBatch(std::string_view batch) {
  std::vector<std::string_view> parts;
  WordReader reader(batch);
  Boundaries boundaries;
  std::size_t part = 0;
  std::string_view word;
  bool begin = false;
  while (reader.Next(word)) {
    if (begin && IsTransactionWord(word)) boundaries.LeaveBlock();
    const Word kind = word.front() == '@' && !word.starts_with("@@") ? Word::Whole : WordOf(word);
    // Table hints stand in parentheses; any other `with` is that of common tables, or of something as rare.
    if (kind == Word::Whole || (kind == Word::With && !reader.BeforeParenthesis())) return {batch};
    if (boundaries.Begins(kind)) {
      const std::size_t offset = reader.OffsetOf(word);
      if (offset > part) parts.push_back(batch.substr(part, offset - part));
      part = offset;
    }
    begin = kind == Word::Begin;
  }
  parts.push_back(batch.substr(part));
  return parts;
}

}  // namespace rebate::tsql
