#include "platform/database/connection_pool.h"

#include <algorithm>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"

namespace rebate {
namespace {

std::optional<files::Identity> Identify(const DataSource& source) {
  return source.embedded ? files::IdentityOf(source.path) : std::nullopt;
}

}  // namespace

Ref<PooledConnection> ConnectionPool::Take(const Text& dsn, const DataSource& source) {
  if (pinned_ && pinned_->dsn == dsn) {
    if (pinned_->busy) {
      throw Error(database_error::kConnection, "Connection", "A call inside of a call can't join the work of others.");
    }
    return pinned_;
  }
  const auto file = Identify(source);
  const auto found =
      std::find_if(kept_.begin(), kept_.end(), [&](const Ref<PooledConnection>& kept) { return kept->dsn == dsn; });
  const bool taken_by_outer_call = found != kept_.end() && (*found)->busy;
  if (found != kept_.end() && !taken_by_outer_call) {
    Ref<PooledConnection> kept = *found;
    kept_.erase(found);
    if (!kept->broken && kept->connection->IsSound() && kept->file == file) {
      kept_.push_back(kept);
      return kept;
    }
  }
  auto fresh = New<PooledConnection>();
  fresh->dsn = dsn;
  fresh->file = file;
  fresh->connection = connect_(source);
  if (!taken_by_outer_call) {
    MakeRoom();
    kept_.push_back(fresh);
  }
  return fresh;
}

void ConnectionPool::Pin(const Text& dsn, ConnectionRef connection) {
  pinned_ = New<PooledConnection>();
  pinned_->dsn = dsn;
  pinned_->connection = std::move(connection);
}

void ConnectionPool::MakeRoom() {
  if (kept_.size() < kMostKept) return;
  const auto idle =
      std::find_if(kept_.begin(), kept_.end(), [](const Ref<PooledConnection>& kept) { return !kept->busy; });
  if (idle != kept_.end()) kept_.erase(idle);
}

}  // namespace rebate
