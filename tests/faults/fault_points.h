#pragma once

#include <cstddef>
#include <string_view>

namespace rebate {

// Where below a call a run can be made to fail.
enum class FaultPoint {
  Statement,     // a text that the component sends
  Commit,        // the commit of a unit of work
  Prepare,       // a statement that the engine is to prepare
  Step,          // a step of the engine
  Open,          // a file that the engine opens
  Read,          // a read from a file
  Write,         // a write to a file, or its truncation
  Sync,          // a sync of a file
  EngineMemory,  // an allocation of the engine
  Memory,        // an allocation of our own
};

inline constexpr FaultPoint kFaultPoints[] = {
    FaultPoint::Statement, FaultPoint::Commit, FaultPoint::Prepare, FaultPoint::Step,         FaultPoint::Open,
    FaultPoint::Read,      FaultPoint::Write,  FaultPoint::Sync,    FaultPoint::EngineMemory, FaultPoint::Memory,
};

std::string_view NameOf(FaultPoint point);

// Puts the hooks under the engine. Once, before anything uses the engine.
void InstallFaultPoints();

// While it lives, the run fails when it comes to `point` for the n-th time, from 1: that once, or each time from then
// on. One at a time in the process. What is counted is the whole process's.
class ArmedFault {
 public:
  ArmedFault(FaultPoint point, std::size_t n, bool stays);
  ~ArmedFault();
  ArmedFault(const ArmedFault&) = delete;
  ArmedFault& operator=(const ArmedFault&) = delete;

  // How often the run has come to the point since.
  std::size_t count() const;
};

// Whether the run, which has come to `point`, is to fail there.
bool FailsAt(FaultPoint point) noexcept;

}  // namespace rebate
