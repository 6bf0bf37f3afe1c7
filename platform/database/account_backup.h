#pragma once

#include <memory>

#include "platform/database/connection.h"
#include "platform/database/data_source.h"
#include "platform/database/percent_listener.h"

namespace rebate {

class EmbeddedBackup;

// A copy of an embedded account as it stands at one moment, made while others read and write the account. It stands
// under a name of its own beside `path`, for its owner's eyes alone, until it is finished: whatever ends the process
// half way leaves nothing at `path`, or what stood there.
class AccountBackup {
 public:
  // Raises, changing nothing, where the account is on a server or can't be opened, and where something stands at
  // `path`; where that may be replaced, only if it is no file, is the account itself or is in use.
  AccountBackup(const DataSource& from, const Text& path, bool replace);
  AccountBackup(const AccountBackup&) = delete;
  AccountBackup& operator=(const AccountBackup&) = delete;
  // Removes a copy that wasn't finished.
  ~AccountBackup();

  // Copies the account, which is left alone from then on; raises where it can't be read or the copy can't be written.
  void Copy(const PercentListener& tell);
  // Whether the copy can be opened as it is; one that an older version made can't.
  bool CanBeChecked() const;
  // A connection to the copy, to be given up before it is finished.
  ConnectionRef Open() const;
  // Puts the copy, which is on the disk as a whole, at its place. Raises where something has come to stand in the way.
  void Finish();

 private:
  std::unique_ptr<EmbeddedBackup> embedded_;
};

}  // namespace rebate
