#include <windows.h>

#include <new>

#include "platform/automation/per_thread.h"

namespace rebate {

ThreadSlot::ThreadSlot(Destroy destroy) : destroy_(destroy), index_(FlsAlloc(destroy)) {
  if (index_ == FLS_OUT_OF_INDEXES) throw std::bad_alloc();
}

// The slot itself stays: other threads may still have their values there, and would lose them here.
ThreadSlot::~ThreadSlot() {
  void* const value = Get();
  if (value == nullptr) return;
  FlsSetValue(index_, nullptr);
  destroy_(value);
}

void* ThreadSlot::Get() const noexcept {
  return FlsGetValue(index_);
}

void ThreadSlot::Set(void* value) const {
  if (FlsSetValue(index_, value) == FALSE) throw std::bad_alloc();
}

}  // namespace rebate
