#include "tests/faults/fault_points.h"

#include <sqlite3.h>

#include <cstdlib>
#include <new>

#include "platform/database/error_numbers.h"
#include "platform/login/call_observer.h"
#include "tests/faults/faulty_disk.h"

namespace rebate {
namespace {

struct Armed {
  bool armed = false;
  FaultPoint point{};
  std::size_t n = 0;
  bool stays = false;
  std::size_t count = 0;
};
Armed now;  // calls and their checks take turns

class RefusingObserver : public CallObserver {
 public:
  void Opening(std::string_view) override {}
  void VotingAbort() override {}
  void VotingComplete() override { RefuseAt(FaultPoint::Commit); }
  void Connecting() override {}
  void Executing(std::string_view) override { RefuseAt(FaultPoint::Statement); }
  void Refused(const Error&) override {}
  void CallingComponent(std::string_view, std::string_view) override {}

 private:
  static void RefuseAt(FaultPoint point) {
    if (FailsAt(point)) throw Error(database_error::kStatement, "Test", "Refused by the test.");
  }
};

RefusingObserver observer;
sqlite3_mem_methods engine_memory;

void* AllocateForEngine(int size) {
  return FailsAt(FaultPoint::EngineMemory) ? nullptr : engine_memory.xMalloc(size);
}
void* ReallocateForEngine(void* memory, int size) {
  return FailsAt(FaultPoint::EngineMemory) ? nullptr : engine_memory.xRealloc(memory, size);
}

}  // namespace

std::string_view NameOf(FaultPoint point) {
  static constexpr std::string_view kNames[] = {"statement", "commit", "prepare", "step",          "open",
                                                "read",      "write",  "sync",    "engine memory", "memory"};
  return kNames[static_cast<std::size_t>(point)];
}

void InstallFaultPoints() {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &engine_memory);
  sqlite3_mem_methods faulty = engine_memory;
  faulty.xMalloc = AllocateForEngine;
  faulty.xRealloc = ReallocateForEngine;
  sqlite3_config(SQLITE_CONFIG_MALLOC, &faulty);
  // Else small allocations come out of a stock and can't fail.
  sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0);
  InstallFaultyDisk();
}

ArmedFault::ArmedFault(FaultPoint point, std::size_t n, bool stays) {
  SetCallObserver(&observer);
  now = {true, point, n, stays, 0};
}

ArmedFault::~ArmedFault() {
  now.armed = false;
  SetCallObserver(nullptr);
}

std::size_t ArmedFault::count() const {
  return now.count;
}

bool FailsAt(FaultPoint point) noexcept {
  if (!now.armed || now.point != point) return false;
  ++now.count;
  return now.stays ? now.count >= now.n : now.count == now.n;
}

}  // namespace rebate

// The linker leads the component's calls of these here.
extern "C" {

int __real_sqlite3_prepare_v3(sqlite3*, const char*, int, unsigned, sqlite3_stmt**, const char**);
int __wrap_sqlite3_prepare_v3(sqlite3* database, const char* sql, int size, unsigned flags, sqlite3_stmt** statement,
                              const char** tail) {
  if (!rebate::FailsAt(rebate::FaultPoint::Prepare)) {
    return __real_sqlite3_prepare_v3(database, sql, size, flags, statement, tail);
  }
  *statement = nullptr;
  return SQLITE_IOERR_READ;
}

int __real_sqlite3_step(sqlite3_stmt*);
int __wrap_sqlite3_step(sqlite3_stmt* statement) {
  return rebate::FailsAt(rebate::FaultPoint::Step) ? SQLITE_IOERR_READ : __real_sqlite3_step(statement);
}
}

void* operator new(std::size_t size) {
  void* const memory = rebate::FailsAt(rebate::FaultPoint::Memory) ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
