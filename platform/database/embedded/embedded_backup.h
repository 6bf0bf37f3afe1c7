#pragma once

#include "platform/database/connection.h"
#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/percent_listener.h"

namespace rebate {

// The copy of an embedded account: see AccountBackup, whose contract it carries out. A source that an older version
// made stays of that version, and so does its copy.
class EmbeddedBackup {
 public:
  EmbeddedBackup(const Text& from, const Text& to, bool replace);
  EmbeddedBackup(const EmbeddedBackup&) = delete;
  EmbeddedBackup& operator=(const EmbeddedBackup&) = delete;
  ~EmbeddedBackup();

  void Copy(const PercentListener& tell);
  bool CanBeChecked() const;
  ConnectionRef Open() const;
  void Finish();

 private:
  void CheckTarget() const;
  // Runs `work`, in whose errors the copy bears the name that it is to get.
  template <typename Work>
  auto UnderItsName(const Work& work) const;

  Text from_;
  Text to_;
  bool replace_;
  Text making_;  // empty when it is finished, or isn't there
  DatabaseHandle source_;
  std::int64_t version_;
};

}  // namespace rebate
