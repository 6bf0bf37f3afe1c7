#pragma once

#include <condition_variable>
#include <exception>
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
  // Raises where no thread can be had.
  explicit CallThread(Text library);
  ~CallThread();
  CallThread(const CallThread&) = delete;
  CallThread& operator=(const CallThread&) = delete;

  // Runs `work` on the thread and waits for its end. Raises what it raises.
  void Run(std::function<void(Instances&)> work);

 private:
  void Loop(Text library);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void(Instances&)> work_;  // empty while there is none
  std::exception_ptr failure_;            // what the work raised
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace rebate
