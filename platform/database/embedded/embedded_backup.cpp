#include "platform/database/embedded/embedded_backup.h"

#include "platform/database/embedded/account_file.h"
#include "platform/database/embedded/account_upgrade.h"
#include "platform/database/embedded/embedded_account.h"
#include "platform/files/file_placing.h"
#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

constexpr int kPagesAStep = 256;

struct FinishBackup {
  void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};
using BackupHandle = std::unique_ptr<sqlite3_backup, FinishBackup>;

int PercentOf(sqlite3_backup* backup) {
  const int total = sqlite3_backup_pagecount(backup);
  return total == 0 ? 100 : static_cast<int>(std::int64_t{100} * (total - sqlite3_backup_remaining(backup)) / total);
}

// The source stands in a transaction that reads: what others write meanwhile neither enters the copy nor has it begin
// anew.
void CopyPages(sqlite3* source, sqlite3* target, const Text& path, const PercentListener& tell) {
  BackupHandle backup(sqlite3_backup_init(target, "main", source, "main"));
  if (!backup) throw SqliteError(target, sqlite3_extended_errcode(target), path);
  int result = SQLITE_OK;
  while (result == SQLITE_OK) {
    result = sqlite3_backup_step(backup.get(), kPagesAStep);
    if (result == SQLITE_OK || result == SQLITE_DONE) tell(PercentOf(backup.get()));
  }
  const int finished = sqlite3_backup_finish(backup.release());
  if (result != SQLITE_DONE) throw SqliteError(nullptr, result, path);
  if (finished != SQLITE_OK) throw SqliteError(target, finished, path);
}

}  // namespace

EmbeddedBackup::EmbeddedBackup(const Text& from, const Text& to, bool replace)
    : from_(from), to_(to), replace_(replace) {
  CheckAccountFile(from_);
  CheckTarget();
  source_ = OpenAccountFile(from_, kLockWait);
  Run(source_.get(), "BEGIN", from_);
  version_ = NeedAccount(source_.get(), from_);
  const Text making = files::NameOfThisProcess(to_ + ".making");
  if (const std::error_code error = files::CreateNew(making)) RefuseAccountMaking(to_, error);
  making_ = making;
}

EmbeddedBackup::~EmbeddedBackup() {
  if (!making_.empty()) RemoveAccountFiles(making_);
}

void EmbeddedBackup::CheckTarget() const {
  if (files::IsTaken(to_)) {
    if (files::IdentityOf(to_) == files::IdentityOf(from_)) {
      RefuseAccount("The copy can't take the place of the account " + from_ + " itself.");
    }
    if (!replace_) RefuseTakenPath(to_);
    if (files::KindOf(to_) != files::Kind::File) RefuseAccount("The path " + to_ + " is no file; a copy is one.");
  }
  RefuseLeftJournal(to_);
}

template <typename Work>
auto EmbeddedBackup::UnderItsName(const Work& work) const {
  try {
    return work();
  } catch (Error& error) {
    error.description = Replace(error.description, making_, to_);
    throw;
  }
}

void EmbeddedBackup::Copy(const PercentListener& tell) {
  UnderItsName([&] {
    const DatabaseHandle target = OpenAccountFile(making_, kLockWait);
    CopyPages(source_.get(), target.get(), making_, tell);
  });
  source_ = nullptr;
}

bool EmbeddedBackup::CanBeChecked() const {
  return version_ == kAccountVersion;
}

ConnectionRef EmbeddedBackup::Open() const {
  return UnderItsName([&] { return OpenEmbedded(making_); });
}

void EmbeddedBackup::Finish() {
  if (files::KindOf(making_ + "-wal") != files::Kind::Missing) {
    RefuseAccount("The account " + to_ + " can't be made: its file can't be completed.");
  }
  CheckTarget();
  const std::error_code error = replace_ ? files::Replace(making_, to_) : files::MoveToFreeName(making_, to_);
  if (error) RefuseAccountMaking(to_, error);
  making_.clear();
  files::SyncFolderOf(to_);
}

}  // namespace rebate
