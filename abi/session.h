#pragma once

#include <mutex>
#include <optional>
#include <string_view>

#include "calls/call_server.h"

namespace rebate {

// The host's part in served calls, which is one for the whole process: it starts with the first of these and ends with
// the last one.
class SharedControl {
 public:
  SharedControl();
  ~SharedControl();
  SharedControl(const SharedControl&) = delete;
  SharedControl& operator=(const SharedControl&) = delete;

  CallControl& operator*() const;
};

// Served calls of one client, from any thread, one at a time.
class ClientSession {
 public:
  // Raises where the data source can't be opened.
  ClientSession(std::optional<Text> dsn, bool trace);

  // The answer to a request, on one line. Raises 70 while another thread's call runs, 5 in another process than the one
  // that the session was made in, 91 when it is closed, and where memory gives out.
  Text Answer(std::string_view request);

  // Ends it, a running call first. In another process, where its threads are none, does nothing.
  void Close();

  // Whether this is another process than the one that the session was made in, where it mustn't be destroyed.
  bool IsForeign() const;

 private:
  Long process_;
  std::mutex serving_;
  SharedControl control_;
  std::optional<CallServer> server_;  // none when it is closed
};

}  // namespace rebate
