#pragma once

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/values/types.h"
#include "tests/loopback.h"

namespace rebate {

// Speaks just enough of a SQL Server's wire protocol, on the loopback address, to show what a driver for it makes of
// our calls. Its answers are fixed:
//
//   kinds      a row with a column of each kind, and one of Nulls
//   duplicate  a row count, then a broken key with the server's second message behind it
//   deadlock   an error that has ended the transaction
//   unknown    an unknown column
//   error N    the error of that number
//   wait       no answer until the client gives up
//   vanish     no answer: the connection is closed
//   insert into …;  a count for each of the joined inserts, of which a 'refused' one breaks a key and a 'deadlock' ends
//              the transaction and the text; a 'vanish' closes the connection
//   select @…  the number of open transactions
//   select …   what `SetShown` says
class TdsServer {
 public:
  TdsServer();
  TdsServer(const TdsServer&) = delete;
  TdsServer& operator=(const TdsServer&) = delete;
  ~TdsServer();

  int port() const { return listener_.port(); }
  // What the clients sent since the last time: texts, and `begin`, `commit` and `rollback` as requests of the driver's.
  std::vector<Text> TakeRequests();
  // The password of the last login.
  Text password();

  // The code page of the database, 0 for one that isn't told, for logins from now on.
  void SetCodePage(int code_page) { code_page_ = code_page; }
  // A value below 0 is an error's number.
  void SetShown(int value) { shown_ = value; }
  // A text that sets several options is refused from now on.
  void RefuseOptions() { refuses_options_ = true; }
  // Logins from now on are refused with this error; 0 for none.
  void RefuseLogins(int error) { login_error_ = error; }
  // Closes the connection that is open, as a server does to an idle one.
  void CloseClient();

 private:
  void Serve(int client);
  Text Answer(const Text& text);
  Text AnswerInserts(const Text& text);
  Text AnswerTransaction(const Text& request);
  Text AnswerLogin(const Text& request);
  void Note(const Text& request);

  Listener listener_;
  int open_transactions_ = 0;  // of the one client
  std::mutex mutex_;
  std::vector<Text> requests_;
  Text password_;
  std::atomic<int> client_ = -1;
  std::atomic<int> code_page_ = 0;
  std::atomic<int> shown_ = 0;
  std::atomic<int> login_error_ = 0;
  std::atomic<bool> refuses_options_ = false;
  std::thread thread_;
};

}  // namespace rebate
