#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "platform/automation/ref.h"
#include "platform/database/connect.h"
#include "platform/files/files.h"

namespace rebate {

// A connection that outlives the calls made on it.
struct PooledConnection : RefCounted {
  Text dsn;
  ConnectionRef connection;
  std::optional<files::Identity> file;  // of an embedded account, as it was when the connection was opened
  bool busy = false;                    // a call is being made on it
  bool broken = false;                  // it failed as a connection and is of no more use
};

// The open connections of one thread, one for each data source text.
class ConnectionPool {
 public:
  using Connector = std::function<ConnectionRef(const DataSource&)>;

  explicit ConnectionPool(Connector connect = Connect) : connect_(std::move(connect)) {}

  // A connection to `source`, which `dsn` names: the one from before where it is idle and sound and the account's file
  // is still the same, else a new one. Raises what connecting raises.
  Ref<PooledConnection> Take(const Text& dsn, const DataSource& source);

  // From here on `dsn` gives this connection and no other, come what may; a call inside of a call on it is refused. One
  // is pinned at a time.
  void Pin(const Text& dsn, ConnectionRef connection);
  void Unpin() { pinned_ = nullptr; }

 private:
  // Past this number the connection that was idle longest is closed.
  static constexpr std::size_t kMostKept = 16;

  void MakeRoom();

  Connector connect_;
  std::vector<Ref<PooledConnection>> kept_;  // used last stands last
  Ref<PooledConnection> pinned_;             // null mostly
};

}  // namespace rebate
