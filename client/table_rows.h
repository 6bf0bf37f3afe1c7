#pragma once

#include <functional>
#include <vector>

#include "client/account_tables.h"

namespace rebate {

// A table whose rows are read part by part, so that no large one has to be held as a whole.
class TableRows {
 public:
  // `columns` are read of each row.
  TableRows(Connection& connection, const AccountTable& table, std::vector<Text> columns)
      : connection_(connection), table_(table), columns_(std::move(columns)) {}

  std::int64_t Count() const;

  // Some rows of the table: the condition on its key that finds them, and no others, in any copy of it.
  struct Part {
    Text condition;
    RecordsetRef rows;
  };
  // Calls `visit` for one part after the other, in the order of the key; parts have some ten thousand rows, more only
  // where they share one key.
  void EachPart(const std::function<void(const Part& part)>& visit) const;
  // The part that the condition finds.
  RecordsetRef Find(const Text& condition) const;

 private:
  std::int64_t Number(const Text& expression, const Text& condition, std::int64_t if_null) const;
  void Visit(std::int64_t first, std::int64_t last, const std::function<void(const Part& part)>& visit) const;

  Connection& connection_;
  const AccountTable& table_;
  std::vector<Text> columns_;
};

// A value as a literal of Transact-SQL; a date to its milliseconds.
Text LiteralOf(const Variant& value);

}  // namespace rebate
