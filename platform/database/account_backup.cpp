#include "platform/database/account_backup.h"

#include "platform/automation/error.h"
#include "platform/database/embedded/embedded_backup.h"

namespace rebate {

AccountBackup::AccountBackup(const DataSource& from, const Text& path, bool replace) {
  if (!from.embedded) {
    throw Error(error_number::kInvalidCall, "DataSource",
                "An account on a server is kept by the server's own backup (BACKUP DATABASE on a SQL Server); `rebate "
                "copy` copies it to a file that is an account of its own.");
  }
  embedded_ = std::make_unique<EmbeddedBackup>(from.path, path, replace);
}

AccountBackup::~AccountBackup() = default;

void AccountBackup::Copy(const PercentListener& tell) {
  embedded_->Copy(tell);
}

bool AccountBackup::CanBeChecked() const {
  return embedded_->CanBeChecked();
}

ConnectionRef AccountBackup::Open() const {
  return embedded_->Open();
}

void AccountBackup::Finish() {
  embedded_->Finish();
}

}  // namespace rebate
