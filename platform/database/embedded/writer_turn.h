#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/files/files.h"

namespace rebate {

// The writers of this process on one account, of which one writes at a time. One that waits here goes on shortly after
// the one before it ends; the engine would have it ask the file again and again, after longer and longer sleeps.
//
// A writer that comes back at once goes on before those that wait, for a while: the account's pages that it has read
// are still good, where another one reads them anew.
class WriterQueue {
 public:
  // That of the file, shared by all connections to it; a queue of its own where the file can't be told.
  static std::shared_ptr<WriterQueue> Of(const Text& path);

  // Waits until nobody writes, and then has the turn; false where that takes longer.
  bool Take(std::chrono::milliseconds longest);
  void Give() noexcept;

 private:
  using Clock = std::chrono::steady_clock;

  std::mutex mutex_;
  std::condition_variable given_;      // to the one who watches for the turn
  std::condition_variable unwatched_;  // told to those behind that one
  bool taken_ = false;
  bool watched_ = false;     // somebody waits, and looks at the turn again and again
  bool promised_ = false;    // to that one, and nobody else
  Clock::time_point since_;  // the turn is one writer's
};

// The turn of one writer, from Take to Give or its end. Threads may take and give it in turns.
class WriterTurn {
 public:
  WriterTurn(std::shared_ptr<WriterQueue> queue, std::chrono::milliseconds longest)
      : queue_(std::move(queue)), longest_(longest) {}
  WriterTurn(const WriterTurn&) = delete;
  WriterTurn& operator=(const WriterTurn&) = delete;
  ~WriterTurn() { Give(); }

  // False where it took too long.
  bool Take() { return held_ = held_ || queue_->Take(longest_); }
  void Give() noexcept {
    if (std::exchange(held_, false)) queue_->Give();
  }

 private:
  std::shared_ptr<WriterQueue> queue_;
  std::chrono::milliseconds longest_;
  bool held_ = false;
};

}  // namespace rebate
