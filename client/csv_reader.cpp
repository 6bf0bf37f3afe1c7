#include "client/csv_reader.h"

#include <algorithm>

#include "platform/values/ascii.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

constexpr std::string_view kBlanks = " \t";

Text PlaceText(std::size_t line, std::size_t character) {
  return "line " + std::to_string(line) + ", character " + std::to_string(character);
}

}  // namespace

bool CsvReader::Next(std::vector<CsvCell>& cells) {
  while (!AtEnd() && AtLineEnd()) SkipLineEnd();
  problem_.reset();
  row_line_ = line_;
  if (AtEnd()) {
    cells.clear();
    return false;
  }
  std::size_t count = 0;
  for (bool more = true; more;) {
    if (count == cells.size()) cells.emplace_back();
    ReadCell(cells[count++]);
    more = !problem_ && !AtEnd() && text_[at_] == ',';
    if (more) ++at_;
  }
  cells.resize(count);
  if (problem_) at_ = std::min(text_.find_first_of("\r\n", at_), text_.size());
  if (!AtEnd()) SkipLineEnd();
  return true;
}

void CsvReader::SkipLineEnd() {
  const bool two = text_.substr(at_, 2) == "\r\n";
  at_ += two ? 2 : 1;
  ++line_;
  line_start_ = at_;
}

void CsvReader::SkipBlanks() {
  while (!AtEnd() && kBlanks.find(text_[at_]) != std::string_view::npos) ++at_;
}

void CsvReader::ReadCell(CsvCell& cell) {
  cell.text.clear();
  cell.is_null = false;
  SkipBlanks();
  cell.line = line_;
  if (!AtEnd() && text_[at_] == '"') {
    ReadQuoted(cell);
  } else {
    ReadPlain(cell);
  }
}

void CsvReader::ReadQuoted(CsvCell& cell) {
  const std::size_t opening = at_++;
  const std::size_t opening_start = line_start_;
  while (true) {
    const std::size_t stop = text_.find_first_of("\"\r\n", at_);
    if (stop == std::string_view::npos) {
      at_ = text_.size();
      return Fail("the quotation mark isn't closed", cell.line, opening_start, opening);
    }
    cell.text += text_.substr(at_, stop - at_);
    at_ = stop;
    if (text_[at_] != '"') {
      SkipLineEnd();
      cell.text += text_.substr(stop, at_ - stop);
    } else if (text_.substr(at_, 2) == "\"\"") {
      cell.text += '"';
      at_ += 2;
    } else {
      break;
    }
  }
  ++at_;
  SkipBlanks();
  if (AtLineEnd() || text_[at_] == ',') return;
  Fail("a comma is due behind the closing quotation mark", line_, line_start_, at_);
}

void CsvReader::ReadPlain(CsvCell& cell) {
  const std::size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
  const std::string_view text = text_.substr(at_, end - at_);
  if (const std::size_t quote = text.find('"'); quote != std::string_view::npos) {
    return Fail("a cell that holds a quotation mark stands in quotation marks, the inner ones doubled", line_,
                line_start_, at_ + quote);
  }
  at_ = end;
  cell.text = Trim(text, kBlanks);
  cell.is_null = cell.text.empty();
}

void CsvReader::Fail(const Text& what, std::size_t line, std::size_t line_start, std::size_t at) {
  const std::size_t character = CountCharacters(text_.substr(line_start, at - line_start)) + 1;
  problem_ = PlaceText(line, character) + ": " + what;
}

Text CsvText(const std::optional<Text>& value) {
  if (!value) return {};
  const Text& text = *value;
  const bool plain =
      !text.empty() && text.find_first_of(",\"\r\n") == Text::npos && Trim(text, kBlanks).size() == text.size();
  return plain ? text : '"' + Replace(text, "\"", "\"\"") + '"';
}

Text PlaceBehind(std::string_view text) {
  std::size_t line = 1;
  std::size_t start = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool ends = text[at] == '\n' || (text[at] == '\r' && text.substr(at, 2) != "\r\n");
    if (!ends) continue;
    ++line;
    start = at + 1;
  }
  return PlaceText(line, CountCharacters(text.substr(start)) + 1);
}

}  // namespace rebate
