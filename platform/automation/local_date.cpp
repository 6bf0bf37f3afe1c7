#include "platform/automation/local_date.h"

#include <array>
#include <ctime>
#include <mutex>

namespace rebate {

Text LocalDate() {
  static std::mutex calendar;  // the standard library breaks times down in a place of its own
  const std::lock_guard lock(calendar);
  const std::time_t now = std::time(nullptr);
  std::array<char, 16> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d", std::localtime(&now));
  return text.data();
}

}  // namespace rebate
