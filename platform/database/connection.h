#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/automation/error.h"
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

// The refusal of a text that was enqueued, raised by whatever sent it: the number and the words are the text's own.
struct EnqueuedError : Error {
  EnqueuedError(const Error& refusal, std::size_t behind_in) : Error(refusal), behind(behind_in) {}

  // The texts taken behind the refused one, up to the one that is being executed. None of them stands.
  std::size_t behind;
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

  // What the last text said beside its rows, in the order in which it did: the lines of `print`, and of `raiserror` up
  // to severity 10. One that was refused halfway has said what came before. They are handed out once; a connection that
  // can't tell them has none.
  virtual std::vector<Text> TakeMessages() { return {}; }

  // Runs the text likewise, and tells the listener what it gives and says, also before a statement that is refused. A
  // connection that can't tell all of it tells what Execute and TakeMessages give.
  virtual void ExecuteFor(std::string_view text, BatchListener& listener);

  // Runs a text whose rows nobody reads. A connection that pays for each journey to its server may keep it back, inside
  // a unit of work, and send it together with others: in order, in front of the next text that is executed, and at the
  // latest when the work is committed. Raises what Execute raises; the refusal of a text that was kept back comes as an
  // EnqueuedError out of the call that sends it, undoes the unit of work, and lets nothing more run in it.
  virtual void Enqueue(std::string_view text) { Execute(text); }
  // Sends what is kept back; without that it does nothing.
  virtual void Flush() {}

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
