#pragma once

#include "platform/database/connection.h"

namespace rebate {

class ConnectionPool;
struct PooledConnection;
class JointConnection;

// The calls of this thread on one data source as one unit of work, while this object lives. What a call completes waits
// for Commit() in the place of standing at its end; a call that undoes work of its own undoes that of all of them, and
// none stores anything from then on. What is locked stays locked to the end.
class JointWork {
 public:
  // Opens the data source, whose calls name it by this very text. Raises what opening it raises.
  explicit JointWork(const Text& dsn);
  JointWork(const JointWork&) = delete;
  JointWork& operator=(const JointWork&) = delete;
  // Undoes what wasn't committed.
  ~JointWork();

  // The connection, for reading what the calls have stored so far.
  const ConnectionRef& connection() const;
  // Whether a call has undone work, and so all of it.
  bool IsUndone() const;
  // Makes the work of all calls stand; calls that follow stand for themselves. Raises, all of it undone, where a call
  // has undone work or the commit fails.
  void Commit();

 private:
  ConnectionPool& pool_;
  Ref<JointConnection> joint_;
};

}  // namespace rebate
