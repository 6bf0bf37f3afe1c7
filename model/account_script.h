#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

// The Transact-SQL scripts that come with the component.
namespace rebate {

// Makes every table, view, key and index of an account, and the rows that every account has: its rebate types and item
// classes.
std::string_view AccountSchema();

// What an account in a file has further: indexes whose keys a server wouldn't take.
std::string_view EmbeddedIndexes();

// Fills an account that was just made with a small shop's suppliers, customers, employees, goods, units and users.
std::string_view AccountSample();

struct ScriptBatch {
  std::string_view text;  // it points into the script
  std::size_t times = 1;  // that it is to be run

  friend bool operator==(const ScriptBatch&, const ScriptBatch&) = default;
};

// The batches of a script, in order: what stands between lines that hold the word GO, in any case, with nothing behind
// it but blanks, a comment from `--` on, and the number of times that the batch before it is to be run. What is inside
// of quotation marks, brackets or a comment is no such line. Batches of white space alone are left out. Raises, naming
// the line, for GO with anything else behind it.
std::vector<ScriptBatch> Batches(std::string_view script);

// The batches that make an account in a file, or on a server.
std::vector<ScriptBatch> AccountBatches(bool embedded);

}  // namespace rebate
