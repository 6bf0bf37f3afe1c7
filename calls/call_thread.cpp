#include "calls/call_thread.h"

#ifdef __unix__
#include <pthread.h>

#include <csignal>
#endif

#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

// While it lives, threads are born with signals blocked: those of the process are for the host's own threads. A
// thread's own faults stay with whoever handles them.
class SignalsBlocked {
 public:
#ifdef __unix__
  SignalsBlocked() {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP}) sigdelset(&blocked, fault);
    pthread_sigmask(SIG_SETMASK, &blocked, &former_);
  }
  ~SignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
  }
#else
  SignalsBlocked() = default;
#endif
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
#ifdef __unix__
  sigset_t former_;
#endif
};

}  // namespace

ObjectRef Instances::Of(const Text& class_name) {
  for (const auto& [name, object] : objects_) {
    if (EqualsIgnoreCase(name, class_name)) return object;
  }
  const ObjectRef object = CreateObject(library_ + "." + class_name);
  objects_.emplace_back(class_name, object);
  return object;
}

CallThread::CallThread(Text library) {
  const SignalsBlocked blocked;
  thread_ = std::thread([this, library = std::move(library)]() mutable { Loop(std::move(library)); });
}

CallThread::~CallThread() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void CallThread::Run(std::function<void(Instances&)> work) {
  std::unique_lock lock(mutex_);
  work_ = std::move(work);
  changed_.notify_all();
  changed_.wait(lock, [this] { return !work_; });
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void CallThread::Loop(Text library) {
  Instances instances(std::move(library));
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return work_ || ending_; });
    if (!work_) return;
    try {
      work_(instances);
    } catch (...) {
      failure_ = std::current_exception();
    }
    work_ = nullptr;
    changed_.notify_all();
  }
}

}  // namespace rebate
