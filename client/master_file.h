#pragma once

#include "client/file_problems.h"
#include "client/master_rows.h"

namespace rebate {

// A line of a file of master data.
struct FileRow {
  std::size_t line = 0;
  std::optional<Long> id;
  std::vector<MasterCell> cells;  // by the columns that the file has
};

// A file of master data, as far as it can be judged without an account.
struct MasterFile {
  std::vector<std::size_t> columns;    // of the kind, in the file's order
  std::vector<std::size_t> positions;  // of each in a line, from 1
  std::vector<FileRow> rows;           // those without a problem

  // The place of a column in a line, such as `line 3, column 2 (Number)`.
  Text PlaceOf(std::size_t line, const MasterKind& kind, std::size_t column) const;
};

// The encodings of a file; Any tells UTF-8 and GB18030 apart.
enum class Encoding { Any, Utf8, Gb18030 };

// A file's bytes as UTF-8 without a byte order mark. Raises 5, with line and character, where they are no text.
Text DecodeFile(Text bytes, Encoding encoding);

// Reads a file's text; what is wrong with it goes to `problems`, and a line that is wrong isn't among the rows.
MasterFile ReadMasterFile(std::string_view text, const MasterKind& kind, FileProblems& problems);

}  // namespace rebate
