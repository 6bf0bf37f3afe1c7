#include "client/master_file.h"

#include <algorithm>

#include "client/csv_reader.h"
#include "client/suggestion.h"
#include "platform/automation/error.h"
#include "platform/values/ascii.h"
#include "platform/values/encoding.h"
#include "platform/values/number_text.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

using Role = MasterColumn::Role;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kLongest = 255;  // UTF-16 units that a text of the account holds

[[noreturn]] void Refuse(Text description) {
  throw Error(error_number::kInvalidCall, "rebate", std::move(description));
}

Text LinePlace(std::size_t line) {
  return "line " + std::to_string(line);
}

Text ColumnPlace(std::size_t line, std::size_t position, std::string_view title) {
  return LinePlace(line) + ", column " + std::to_string(position) + " (" + Text(title) + ")";
}

// A flag as the account holds it; nothing where the text is none.
std::optional<Text> FlagOf(const Text& text) {
  for (const char* word : {"1", "yes", "true", "是"}) {
    if (EqualsIgnoreCase(text, word)) return "1";
  }
  for (const char* word : {"0", "no", "false", "否"}) {
    if (EqualsIgnoreCase(text, word)) return "0";
  }
  return std::nullopt;
}

// Users' ids as the account holds them: what has commas stays as it is, a list with ; gets commas around each id.
// Nothing where the text is no such list.
std::optional<Text> RightsOf(const Text& text) {
  if (text.find_first_not_of("0123456789,") == Text::npos) return text;
  Text rights = ",";
  for (const Text& part : Split(text, ';')) {
    const std::string_view id = Trim(part);
    if (id.empty() || id.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    rights += Text(id) + ",";
  }
  return rights;
}

// Reads the lines behind the titles.
class FileParser {
 public:
  FileParser(std::string_view text, const MasterKind& kind, FileProblems& problems)
      : reader_(text), kind_(kind), problems_(problems) {}

  MasterFile Parse() {
    if (!ReadTitles()) return {};
    while (reader_.Next(cells_)) ReadLine();
    return std::move(file_);
  }

 private:
  static constexpr std::size_t kId = static_cast<std::size_t>(-1);

  bool ReadTitles() {
    if (!reader_.Next(cells_)) {
      problems_.Add(1, "the file is empty; its first line holds the columns' titles");
      return false;
    }
    if (reader_.problem()) {
      problems_.Add(reader_.line(), *reader_.problem());
      return false;
    }
    for (const CsvCell& cell : cells_) TakeTitle(cell.text);
    for (std::size_t i = 0; i < kind_.columns.size() && problems_.empty(); ++i) {
      const bool is_there = std::find(titles_.begin(), titles_.end(), i) != titles_.end();
      if (kind_.columns[i].role == Role::Key && !is_there) {
        problems_.Add(reader_.line(), "there is no column " + Text(kind_.columns[i].title) + ", by which " +
                                          Text(kind_.word) + " are found");
      }
    }
    return problems_.empty();
  }

  void TakeTitle(const Text& title) {
    const std::optional<std::size_t> column =
        IsIdTitle(kind_, title) ? std::optional<std::size_t>(kId) : ColumnOfTitle(kind_, title);
    const Text place = ColumnPlace(reader_.line(), titles_.size() + 1, title) + ": ";
    if (!column) {
      std::vector<Text> known = {Text(kIdTitle)};
      for (const MasterColumn& one : kind_.columns) known.emplace_back(one.title);
      Text list;
      for (const Text& one : known) list += (list.empty() ? "" : ", ") + one;
      problems_.Add(reader_.line(), place + Text(kind_.word) + " have no such column; they have " + list);
    } else if (std::find(titles_.begin(), titles_.end(), *column) != titles_.end()) {
      problems_.Add(reader_.line(), place + "the column is there twice");
    } else if (*column != kId) {
      file_.columns.push_back(*column);
      file_.positions.push_back(titles_.size() + 1);
    }
    titles_.push_back(column.value_or(kId));
  }

  void ReadLine() {
    if (reader_.problem()) return problems_.Add(reader_.line(), *reader_.problem());
    // What a spreadsheet leaves of an empty line.
    if (std::all_of(cells_.begin(), cells_.end(), [](const CsvCell& cell) { return cell.is_null; })) return;
    if (cells_.size() != titles_.size()) {
      return problems_.Add(reader_.line(), LinePlace(reader_.line()) + " has " + std::to_string(cells_.size()) +
                                               (cells_.size() == 1 ? " cell where " : " cells where ") +
                                               std::to_string(titles_.size()) + " are due");
    }
    FileRow row;
    row.line = reader_.line();
    bool good = true;
    for (std::size_t i = 0; i < cells_.size(); ++i) good = ReadCell(i, row) && good;
    if (good && HasName(row)) file_.rows.push_back(std::move(row));
  }

  bool ReadCell(std::size_t at, FileRow& row) {
    CsvCell& cell = cells_[at];
    if (cell.text.find('\0') != Text::npos) return Report(at, "a character with the code 0");
    if (titles_[at] == kId) return ReadId(at, row);
    MasterCell& value = row.cells.emplace_back();
    if (cell.is_null) return true;
    switch (kind_.columns[titles_[at]].role) {
      case Role::Flag:
        value = FlagOf(cell.text);
        return value || Report(at, cell.text + " is neither 0 (no) nor 1 (yes)");
      case Role::Rights:
        value = RightsOf(cell.text);
        if (!value) return Report(at, cell.text + " is no list of user ids, such as 1;1001");
        break;
      case Role::Units:
        value = std::move(cell.text);
        return true;
      case Role::Key:
      case Role::Plain:
        value = std::move(cell.text);
        break;
    }
    const std::size_t size = CountUnits(*value, true);
    return size <= kLongest ||
           Report(at, "the text has " + std::to_string(size) + " characters, and may have " + std::to_string(kLongest));
  }

  bool ReadId(std::size_t at, FileRow& row) {
    const CsvCell& cell = cells_[at];
    if (cell.is_null) return true;
    row.id = WholeNumber<Long>(cell.text);
    return (row.id && *row.id > 0) ||
           Report(at, (cell.text.empty() ? "an empty text" : cell.text) + " is no id, which is an integer from 1 on");
  }

  bool HasName(const FileRow& row) {
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      if (kind_.columns[file_.columns[i]].role != Role::Key || row.id) continue;
      if (row.cells[i] && !NumberKey(*row.cells[i]).empty()) continue;
      return Report(file_.positions[i] - 1, "nothing stands there, and no id in its place");
    }
    return true;
  }

  bool Report(std::size_t at, const Text& what) {
    const std::string_view title = titles_[at] == kId ? kIdTitle : kind_.columns[titles_[at]].title;
    problems_.Add(cells_[at].line, ColumnPlace(cells_[at].line, at + 1, title) + ": " + what);
    return false;
  }

  CsvReader reader_;
  const MasterKind& kind_;
  FileProblems& problems_;
  MasterFile file_;
  std::vector<std::size_t> titles_;  // columns of the kind, or kId
  std::vector<CsvCell> cells_;
};

}  // namespace

Text MasterFile::PlaceOf(std::size_t line, const MasterKind& kind, std::size_t column) const {
  const auto found = std::find(columns.begin(), columns.end(), column);
  if (found == columns.end()) return LinePlace(line);
  return ColumnPlace(line, positions[static_cast<std::size_t>(found - columns.begin())], kind.columns[column].title);
}

Text DecodeFile(Text bytes, Encoding encoding) {
  const bool is_marked = bytes.starts_with(kByteOrderMark);
  if (is_marked && encoding != Encoding::Gb18030) {
    bytes.erase(0, kByteOrderMark.size());
    encoding = Encoding::Utf8;
  }
  if (encoding != Encoding::Gb18030) {
    const std::size_t good = WellFormedSize(bytes);
    if (good == bytes.size()) return bytes;
    const Text place = PlaceBehind(std::string_view(bytes).substr(0, good));
    if (encoding == Encoding::Utf8) Refuse("what stands at " + place + " is no UTF-8");
    // As GB18030 it might read, as other characters.
    if (IsDamagedUtf8(bytes))
      Refuse("the file is UTF-8, but what stands at " + place + " is none; --encoding gb18030 reads it as GB18030");
  }
  Decoded decoded = FromGb18030(bytes);
  if (decoded.whole) return std::move(decoded.text);
  Refuse(
      Text(encoding == Encoding::Any ? "the file is neither UTF-8 nor GB18030: what stands at " : "what stands at ") +
      PlaceBehind(decoded.text) + " is no GB18030");
}

MasterFile ReadMasterFile(std::string_view text, const MasterKind& kind, FileProblems& problems) {
  return FileParser(text, kind, problems).Parse();
}

}  // namespace rebate
