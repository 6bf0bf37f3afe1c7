#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "abi/session.h"

namespace rebate {

// The open sessions of the process by number. Numbers count up from 1 and aren't used again.
class SessionTable {
 public:
  // Raises what making a session raises.
  std::uint64_t Open(std::optional<Text> dsn, bool trace);

  // Raises 91 for a number under which no session is open.
  std::shared_ptr<ClientSession> Find(std::uint64_t number);

  // Closes the session and waits for its end. A number that is no session's is let be.
  void Close(std::uint64_t number);

 private:
  std::mutex mutex_;
  std::map<std::uint64_t, std::shared_ptr<ClientSession>> sessions_;
  std::uint64_t last_ = 0;
};

// The process's table, which no end of the process destroys.
SessionTable& TheSessionTable();

}  // namespace rebate
