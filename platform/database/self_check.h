#pragma once

#include <vector>

#include "platform/database/connection.h"

namespace rebate {

// A connection to a store that can look its own files through.
class SelfCheckingStore {
 public:
  virtual ~SelfCheckingStore() = default;
  // As FileFaults below.
  virtual std::vector<Text> FileFaults() = 0;
};

// What the connection's store finds wrong in its own files, such as a page that is damaged or an index that lacks a
// row; a line each. None where nothing is wrong, and where the files are looked after elsewhere, as on a server. Raises
// where the store can't be asked.
inline std::vector<Text> FileFaults(Connection& connection) {
  auto* const store = dynamic_cast<SelfCheckingStore*>(&connection);
  return store != nullptr ? store->FileFaults() : std::vector<Text>();
}

}  // namespace rebate
