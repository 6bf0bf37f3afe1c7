#pragma once

#include <algorithm>
#include <ostream>

#include "platform/values/types.h"

namespace rebate {

// A counter line on a terminal, such as `making shop.db: 12/40`, wiped when the work ends; shows nothing elsewhere.
class Progress {
 public:
  Progress(std::ostream& err, bool shown, Text what, std::size_t total)
      : err_(err), shown_(shown && total > 1), what_(std::move(what)), total_(total) {}
  ~Progress() {
    if (shown_) err_ << '\r' << Text(widest_, ' ') << '\r' << std::flush;
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Step() { To(done_ + 1); }
  // So much is done by now.
  void To(std::size_t done) {
    if (!shown_ || done == done_) return;
    const bool redraw = done / stride_ != done_ / stride_ || done >= total_;
    done_ = done;
    if (!redraw) return;
    const Text line = what_ + ": " + std::to_string(done_) + "/" + std::to_string(total_);
    widest_ = std::max(widest_, line.size());  // no text takes more columns than bytes
    err_ << '\r' << line << std::flush;
  }

 private:
  std::ostream& err_;
  bool shown_;
  Text what_;
  std::size_t total_;
  std::size_t stride_ =
      std::max<std::size_t>(total_ / 500, 1);  // a terminal takes longer to show a step than many take
  std::size_t done_ = 0;
  std::size_t widest_ = 0;
};

}  // namespace rebate
