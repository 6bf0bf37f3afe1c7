#pragma once

#include <exception>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/database/connection.h"
#include "platform/database/odbc/character_check.h"
#include "platform/database/odbc/handle.h"
#include "platform/database/odbc/statement_words.h"
#include "platform/database/row_set.h"

namespace rebate::odbc {

// What a connection text asks for.
struct Settings {
  Text text;                    // for the driver, without our own keys
  Text password_variable;       // the environment variable that holds the password, where one is named
  Text password_file;           // likewise the file
  SQLULEN login_timeout = 15;   // seconds, 0 for no limit
  SQLULEN query_timeout = 120;  // seconds, 0 for no limit

  // Raises an error where the text can't be read.
  static Settings Parse(const Text& connection_text);
};

// An open connection to a server. It starts without a transaction, each statement standing by itself; its transactions
// are serializable: what one has read, no other changes before its end.
class Link {
 public:
  // Connects. Raises an error that names the server and says what to do.
  explicit Link(const Settings& settings);
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  // What is not committed is undone.
  ~Link();

  // Whether the driver knows that the server is gone.
  bool IsDead() const;

  // Whether rows that a transaction has read stay locked against writers until it ends. Elsewhere readers work on a
  // snapshot, and stand in nobody's way.
  bool LocksWhatItReads() const { return is_sql_server_; }

  // Runs the text, every statement of it, also behind one that is refused. Gives the first row set, or null, and tells
  // `listener`, where there is one, of all row sets and counts; raises the error of the first statement that is
  // refused.
  Ref<RowSet> Run(std::string_view text, const StatementTraits& traits, BatchListener* listener = nullptr);

  // Whether it runs texts that are joined, and this one may stand among them: nothing of it would be changed on its
  // way.
  bool MayJoin(std::string_view insert) const;

  struct Refusal {
    std::size_t at;  // the place of the refused text
    std::exception_ptr error;
  };
  // Runs the texts, plain inserts inside of a transaction, as one: the server is asked once. Gives the first refusal
  // among them; the transaction is then to be undone, since a server may have run those behind it.
  std::optional<Refusal> RunJoined(std::span<const Text> inserts);

  // Makes the statements from now on part of one transaction.
  void BeginTransaction();
  // Each ends the transaction, and the next statement begins a new one. Raises where that fails.
  void Commit();
  void Rollback();
  // Whether the server, by its own count, has ended the transaction, as it does on some errors. False where it can't be
  // asked.
  bool TransactionIsGone();
  // Whether the text that ran last has itself ended the transaction.
  bool TextEndedTransaction();
  // Lets each statement stand by itself again.
  void LeaveTransactions();

 private:
  // How far a text ran: the results in front of its first refusal, and that one, where there is one.
  struct Progress {
    std::size_t results = 0;
    std::exception_ptr refusal;
  };
  // Runs the text to its end. `take` is called with the statement on each of its results, and whether that is a change
  // that found no rows.
  template <typename Take>
  Progress RunThrough(std::string_view text, Take take);
  Progress RunThrough(std::string_view text);
  // The place of the text for which the joined ones were refused, 0 where that can't be found out.
  std::size_t FindRefused(std::span<const Text> inserts, const std::exception_ptr& refusal);

  void Connect(const Settings& settings);
  // Sees to it that the transactions are serializable.
  void Isolate();
  void IsolateByStatement();
  // Sets what the account's statements and indexes rely on, and learns what texts the server keeps.
  void PrepareSqlServer();
  void SetOptions();
  // Null where the server refuses the text.
  Ref<RowSet> RunWhereKnown(std::string_view text);
  void SetAutocommit(bool on);
  void EndTransaction(SQLSMALLINT completion);
  void Check(SQLRETURN outcome) const;

  Environment environment_;
  Session session_;
  SQLULEN query_timeout_;
  bool is_postgres_ = false;
  bool is_sql_server_ = false;  // it counts nested transactions, and commits with the last one alone
  bool isolated_ = false;       // transactions are serializable until a text says otherwise
  bool isolates_each_ = false;  // the driver doesn't know how: each transaction is told by a statement
  bool nested_ = false;         // a text began one inside ours
  bool may_end_ = false;        // the text that ran last may have ended ours
  std::optional<CharacterCheck> characters_;
};

}  // namespace rebate::odbc
