#include "calls/call_thread.h"

#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"

namespace rebate {

ObjectRef Instances::Of(const Text& class_name) {
  for (const auto& [name, object] : objects_) {
    if (EqualsIgnoreCase(name, class_name)) return object;
  }
  const ObjectRef object = CreateObject(library_ + "." + class_name);
  objects_.emplace_back(class_name, object);
  return object;
}

CallThread::CallThread(const Text& library) : thread_([this, library] { Loop(library); }) {}

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
}

void CallThread::Loop(const Text& library) {
  Instances instances(library);
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return work_ || ending_; });
    if (!work_) return;
    work_(instances);
    work_ = nullptr;
    changed_.notify_all();
  }
}

}  // namespace rebate
