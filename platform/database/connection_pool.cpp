#include "platform/database/connection_pool.h"

#include <algorithm>

namespace rebate {
namespace {

std::optional<files::Identity> Identify(const DataSource& source) {
  return source.embedded ? files::IdentityOf(source.path) : std::nullopt;
}

}  // namespace

Ref<PooledConnection> ConnectionPool::Take(const Text& dsn, const DataSource& source) {
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

void ConnectionPool::MakeRoom() {
  if (kept_.size() < kMostKept) return;
  const auto idle =
      std::find_if(kept_.begin(), kept_.end(), [](const Ref<PooledConnection>& kept) { return !kept->busy; });
  if (idle != kept_.end()) kept_.erase(idle);
}

}  // namespace rebate
