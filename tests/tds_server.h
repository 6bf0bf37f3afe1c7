#pragma once

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
//   vanish     no answer: the connection is closed
//   select …   the number of open transactions
class TdsServer {
 public:
  TdsServer();
  TdsServer(const TdsServer&) = delete;
  TdsServer& operator=(const TdsServer&) = delete;
  ~TdsServer();

  int port() const { return listener_.port(); }
  // What the clients sent since the last time: texts, and `begin`, `commit` and `rollback` as requests of the driver's.
  std::vector<Text> TakeRequests();

 private:
  void Serve(int client);
  Text Answer(const Text& text);
  Text AnswerTransaction(const Text& request);
  void Note(const Text& request);

  Listener listener_;
  int open_transactions_ = 0;  // of the one client
  std::mutex mutex_;
  std::vector<Text> requests_;
  std::thread thread_;
};

}  // namespace rebate
