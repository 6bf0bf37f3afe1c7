#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/automation/object.h"
#include "platform/values/types.h"

namespace rebate {

// One instance of each class of a library, made on first use.
class Instances {
 public:
  explicit Instances(Text library) : library_(std::move(library)) {}

  // Raises 429 for an unknown class, and what making the instance raises.
  ObjectRef Of(const Text& class_name);

 private:
  Text library_;
  std::vector<std::pair<Text, ObjectRef>> objects_;
};

// A thread with instances of its own, which live and die on it.
class CallThread {
 public:
  explicit CallThread(const Text& library);
  ~CallThread();
  CallThread(const CallThread&) = delete;
  CallThread& operator=(const CallThread&) = delete;

  // Runs `work` on the thread and waits for its end. `work` must not raise.
  void Run(std::function<void(Instances&)> work);

 private:
  void Loop(const Text& library);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void(Instances&)> work_;  // empty while there is none
  bool ending_ = false;
  std::thread thread_;  // the last member: it uses the others
};

}  // namespace rebate
