#include "tests/faults/faulty_disk.h"

#include <sqlite3.h>

#include "tests/faults/fault_points.h"

namespace rebate {
namespace {

sqlite3_vfs* sound = nullptr;
sqlite3_vfs faulty;

// A file of the engine's own file system stands right behind it.
struct FaultyFile {
  sqlite3_file base;
  sqlite3_file* sound;
};

sqlite3_file* SoundOf(sqlite3_file* file) {
  return reinterpret_cast<FaultyFile*>(file)->sound;
}

// A method of the file that is there, handed on as it is.
template <auto Method, typename... Arguments>
auto HandOn(sqlite3_file* file, Arguments... arguments) {
  sqlite3_file* const to = SoundOf(file);
  return (to->pMethods->*Method)(to, arguments...);
}

// Likewise, but for the fault point.
template <auto Method, FaultPoint Point, int Fault, typename... Arguments>
int FailOr(sqlite3_file* file, Arguments... arguments) {
  if (FailsAt(Point)) return Fault;
  return HandOn<Method>(file, arguments...);
}

using Io = sqlite3_io_methods;
constexpr Io kMethods = {
    3,
    HandOn<&Io::xClose>,
    FailOr<&Io::xRead, FaultPoint::Read, SQLITE_IOERR_READ, void*, int, sqlite3_int64>,
    FailOr<&Io::xWrite, FaultPoint::Write, SQLITE_FULL, const void*, int, sqlite3_int64>,
    FailOr<&Io::xTruncate, FaultPoint::Write, SQLITE_IOERR_TRUNCATE, sqlite3_int64>,
    FailOr<&Io::xSync, FaultPoint::Sync, SQLITE_IOERR_FSYNC, int>,
    HandOn<&Io::xFileSize, sqlite3_int64*>,
    HandOn<&Io::xLock, int>,
    HandOn<&Io::xUnlock, int>,
    HandOn<&Io::xCheckReservedLock, int*>,
    HandOn<&Io::xFileControl, int, void*>,
    HandOn<&Io::xSectorSize>,
    HandOn<&Io::xDeviceCharacteristics>,
    FailOr<&Io::xShmMap, FaultPoint::Open, SQLITE_IOERR_SHMMAP, int, int, int, void volatile**>,
    HandOn<&Io::xShmLock, int, int, int>,
    HandOn<&Io::xShmBarrier>,
    HandOn<&Io::xShmUnmap, int>,
    HandOn<&Io::xFetch, sqlite3_int64, int, void**>,
    HandOn<&Io::xUnfetch, sqlite3_int64, void*>,
};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* given) {
  auto* const opened = reinterpret_cast<FaultyFile*>(file);
  opened->base.pMethods = nullptr;
  opened->sound = reinterpret_cast<sqlite3_file*>(opened + 1);
  if (FailsAt(FaultPoint::Open)) return SQLITE_CANTOPEN;
  const int result = sound->xOpen(sound, name, opened->sound, flags, given);
  if (opened->sound->pMethods != nullptr) opened->base.pMethods = &kMethods;
  return result;
}

}  // namespace

void InstallFaultyDisk() {
  sound = sqlite3_vfs_find(nullptr);
  faulty = *sound;
  faulty.zName = "faulty";
  faulty.szOsFile = static_cast<int>(sizeof(FaultyFile)) + sound->szOsFile;
  faulty.xOpen = Open;
  sqlite3_vfs_register(&faulty, 1);
}

const char* SoundDisk() {
  return sound->zName;
}

}  // namespace rebate
