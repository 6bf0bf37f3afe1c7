#pragma once

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/values/types.h"
#include "tests/loopback.h"

namespace rebate {

// Stands between a driver and a PostgreSQL server, both on the loopback address. It counts what the driver waits for,
// and says to the server in its own words what the texts of a save say in Transact-SQL: temporary tables, joined texts,
// the last identity. Every other text goes on as it is.
class PostgresProxy {
 public:
  explicit PostgresProxy(int server_port);
  PostgresProxy(const PostgresProxy&) = delete;
  PostgresProxy& operator=(const PostgresProxy&) = delete;
  ~PostgresProxy();

  int port() const { return listener_.port(); }
  // The requests since the last time, each of which the driver waited for. Logins are none.
  int TakeRoundTrips() { return round_trips_.exchange(0); }

 private:
  void Serve(int accepted);

  Listener listener_;
  int server_port_;
  std::atomic<int> round_trips_ = 0;
  std::mutex mutex_;
  std::vector<int> drivers_;  // the sockets of the open connections
  std::vector<std::thread> connections_;
  std::thread accepting_;
};

}  // namespace rebate
