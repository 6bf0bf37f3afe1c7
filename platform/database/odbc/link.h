#pragma once

#include <string_view>
#include <vector>

#include "platform/database/odbc/handle.h"
#include "platform/database/recordset.h"

namespace rebate::odbc {

// What a connection text asks for.
struct Settings {
  Text driver_text;           // for the driver manager
  SQLULEN login_timeout;      // seconds, 0 for no limit
  SQLULEN query_timeout;      // seconds, 0 for no limit
  std::vector<Text> secrets;  // the passwords in it, which no error may show

  // Raises an error where the text can't be read.
  static Settings Parse(const Text& connection_text);
};

// An open connection to a server. It starts without a transaction, each statement standing by itself.
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

  // Runs the text, every statement of it, also behind one that is refused. Gives the first row set; raises the error of
  // the first statement that is refused.
  RecordsetRef Run(std::string_view text);

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
  void SetAutocommit(bool on);
  void EndTransaction(SQLSMALLINT completion);
  void Check(SQLRETURN outcome) const;

  Environment environment_;
  Session session_;
  SQLULEN query_timeout_;
  bool counts_transactions_ = false;  // the server counts nested transactions, and commits with the last one alone
  bool nested_ = false;               // a text began one inside ours
  bool may_end_ = false;              // the text that ran last has words that may end ours
};

}  // namespace rebate::odbc
