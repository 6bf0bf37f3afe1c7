#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/database/recordset.h"

namespace rebate {

// Hears all that a text gives and says, in the order in which it does.
class BatchListener {
 public:
  virtual ~BatchListener() = default;
  virtual void Rows(RecordsetRef rows) = 0;       // of one statement, all of them
  virtual void Affected(std::int64_t count) = 0;  // the rows that one statement has written or deleted
  virtual void Message(const Text& message) = 0;  // a line of `print`, or of `raiserror` up to severity 10
};

// A connection to an account's database. It owns its temporary tables and lives on one thread at a time.
//
// Statements run inside a unit of work: `BeginWork` readies it, the first statement begins it, and it ends with
// `CommitWork` or `RollbackWork`. `begin tran` and `commit tran` in a statement's text nest inside it. A statement
// outside a unit of work stands by itself.
class Connection : public RefCounted {
 public:
  // Runs one text of Transact-SQL, which may be a batch of several statements. Gives the first row set of the batch, or
  // the null reference where no statement gave one. Raises the error of the first statement that is refused; a batch
  // that doesn't parse runs nothing.
  virtual RecordsetRef Execute(std::string_view text) = 0;

  // Runs texts whose rows nobody reads, one after another, as Execute runs each: where many of them insert, faster than
  // one call for each. Raises the error of the first that is refused, behind which nothing stands. `done` counts the
  // texts that have succeeded, also where it raises; the unit of work must then be undone.
  virtual void ExecuteEach(std::span<const Text> texts, std::size_t& done);
  // Runs a text that is one query, for a caller who asks for nothing but its first row: the others may be missing.
  virtual RecordsetRef ExecuteForFirst(std::string_view text) { return Execute(text); }

  // What the last text said beside its rows, in the order in which it did: the lines of `print`, and of `raiserror` up
  // to severity 10. One that was refused halfway has said what came before. They are handed out once; a connection that
  // can't tell them has none.
  virtual std::vector<Text> TakeMessages() { return {}; }

  // Runs the text likewise, and tells the listener what it gives and says, also before a statement that is refused. A
  // connection that can't tell all of it tells what Execute and TakeMessages give.
  virtual void ExecuteFor(std::string_view text, BatchListener& listener);

  // Whether it may be used further: false where a failure may have left it other than its user thinks.
  virtual bool IsSound() const { return true; }

  // Readies a unit of work; one that is open is undone first. Takes no lock.
  virtual void BeginWork() = 0;
  // Makes the work of the unit stand and ends it; raises where that fails, and the work is then undone. Without an open
  // unit it does nothing.
  virtual void CommitWork() = 0;
  // Undoes the work of the unit and ends it; never raises. Without an open unit it does nothing.
  virtual void RollbackWork() noexcept = 0;
};

using ConnectionRef = Ref<Connection>;

}  // namespace rebate
