#include "abi/session_table.h"

#include "platform/automation/error.h"

namespace rebate {

std::uint64_t SessionTable::Open(std::optional<Text> dsn, bool trace) {
  auto session = std::make_shared<ClientSession>(std::move(dsn), trace);
  const std::lock_guard lock(mutex_);
  sessions_.emplace(last_ + 1, std::move(session));
  return ++last_;
}

std::shared_ptr<ClientSession> SessionTable::Find(std::uint64_t number) {
  const std::lock_guard lock(mutex_);
  const auto found = sessions_.find(number);
  if (found == sessions_.end()) {
    throw Error(error_number::kObjectNotSet, "rebate", "No session " + std::to_string(number) + " is open");
  }
  return found->second;
}

void SessionTable::Close(std::uint64_t number) {
  std::shared_ptr<ClientSession> session;
  {
    const std::lock_guard lock(mutex_);
    const auto found = sessions_.find(number);
    if (found == sessions_.end() || found->second->IsForeign()) return;
    session = std::move(found->second);
    sessions_.erase(found);
  }
  session->Close();
}

SessionTable& TheSessionTable() {
  static SessionTable& table = *new SessionTable;
  return table;
}

}  // namespace rebate
