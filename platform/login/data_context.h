#pragma once

#include <memory>

#include "platform/database/connection.h"
#include "platform/values/types.h"

namespace rebate {

class ConnectionPool;

// Who is logged in.
class UserInfo : public RefCounted {
 public:
  virtual std::int16_t UserID() const = 0;
};

// The context of a call: names the data source, gives its connection and takes the votes on the call's work.
class DataContext : public RefCounted {
 public:
  // The work of this call shall not stand: what is there is undone at once.
  virtual void VoteAbort() = 0;
  // The work of this call may stand: it is committed. Raises where the commit fails.
  virtual void VoteComplete() = 0;
  virtual Ref<UserInfo> GetUserInfo() = 0;
  // Opens the data source that the connection text names; its connection stays open across calls. Raises, naming the
  // path or the server and what to do, where it can't be opened.
  virtual void Open(const Text& dsn) = 0;
  virtual ConnectionRef GetConnection() = 0;
  // The call returns: work on which no complete vote was cast last is undone, and no lock stays behind.
  virtual void EndCall() noexcept = 0;
};

// A context whose connections come from the pool.
Ref<DataContext> MakeDataContext(std::shared_ptr<ConnectionPool> pool);

// The global application object: one per thread, made on first use.
class GlobalApplication {
 public:
  virtual ~GlobalApplication() = default;
  virtual Ref<DataContext> GetContext() = 0;
};

GlobalApplication& TheGlobalApplication();

// The connections that its contexts take.
ConnectionPool& ConnectionsOfThisThread();

}  // namespace rebate
