#pragma once

#include <vector>

#include "client/account_tables.h"
#include "platform/database/percent_listener.h"

namespace rebate {

// The tables of an account that number their rows themselves, as the database has them, or as a new account has. The
// database is asked outside of a unit of work.
std::vector<Text> NumberedTables(Connection& target);
std::vector<Text> NumberedTables();
// Whether the database tells the last number that a table drew. Likewise asked outside of a unit of work.
bool TellsLastNumbers(Connection& source);

// Copies the rows of an account, all ids kept, to a database that has the tables of one.
class AccountCopy {
 public:
  struct Copied {
    Text table;
    std::int64_t rows;
  };

  // Both connections stand in a unit of work, that of the source sees it as it is at one moment. Raises where the
  // source lacks a table, or the target a column of it.
  // `numbered` are the tables of the target that number their rows themselves; `tells_numbers` says whether the source
  // tells its last numbers: no number of a row that is gone is given again then.
  AccountCopy(Connection& source, Connection& target, const std::vector<Text>& numbered, bool tells_numbers);

  // Raises where the target holds schemes or other rows of its own: only its rebate types give way.
  void CheckTarget();
  // Copies all tables, then compares them with the target's by content; raises, telling the first difference. Gives the
  // rows of each table.
  std::vector<Copied> Run(const PercentListener& tell);

 private:
  struct Table {
    AccountTable table;
    std::vector<Text> columns;
    bool has_identity;  // the target numbers the rows itself, unless told otherwise
    std::int64_t rows;
  };

  void Copy(const Table& table);
  void CopyRows(const Table& table);
  void DrawNumbers(const Table& table);
  void Compare(const Table& table);
  void Advance(std::int64_t rows);

  Connection& source_;
  Connection& target_;
  bool tells_numbers_;
  std::vector<Table> tables_;
  std::int64_t total_ = 0;
  std::int64_t done_ = 0;
  PercentListener tell_;
};

}  // namespace rebate
