#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/values/types.h"

namespace rebate {

// A cell of a CSV file.
struct CsvCell {
  // The text of a quoted cell as it stands between the quotes, that of another one without blanks at its ends.
  Text text;
  bool is_null = false;  // nothing stands there, not even quotes
  std::size_t line = 0;  // in which it begins, from 1
};

// Reads the lines of a text with commas between the cells of a line and line ends of any system. A cell in quotation
// marks may hold commas, line ends and, doubled, quotation marks. Lines without any sign are skipped.
class CsvReader {
 public:
  // The text is UTF-8 and outlives the reader.
  explicit CsvReader(std::string_view text) : text_(text) {}

  // Reads the next line's cells; false at the end. Where quotation marks aren't paired, problem() tells, and the line's
  // cells are worth nothing; the next call goes on behind it.
  bool Next(std::vector<CsvCell>& cells);

  // The line in which the last cells begin, from 1.
  std::size_t line() const { return row_line_; }
  // What was wrong with the last line, with its line and character; nothing else.
  const std::optional<Text>& problem() const { return problem_; }

 private:
  bool AtEnd() const { return at_ == text_.size(); }
  bool AtLineEnd() const { return AtEnd() || text_[at_] == '\n' || text_[at_] == '\r'; }
  void SkipLineEnd();
  void SkipBlanks();
  void ReadCell(CsvCell& cell);
  void ReadQuoted(CsvCell& cell);
  void ReadPlain(CsvCell& cell);
  void Fail(const Text& what, std::size_t line, std::size_t line_start, std::size_t at);

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  std::size_t line_start_ = 0;
  std::size_t row_line_ = 1;
  std::optional<Text> problem_;
};

// A cell as CsvReader reads it back: a Null as nothing, an empty text as "", others in quotation marks where they need
// them.
Text CsvText(const std::optional<Text>& value);

// The line and the character, each from 1, at which a text that begins with `text` goes on, such as `line 3, character
// 7`.
Text PlaceBehind(std::string_view text);

}  // namespace rebate
