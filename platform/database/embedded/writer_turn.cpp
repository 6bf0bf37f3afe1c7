#include "platform/database/embedded/writer_turn.h"

#include <map>

namespace rebate {
namespace {

constexpr std::chrono::microseconds kLook{200};
// So long a writer may go on before those that wait.
constexpr std::chrono::milliseconds kStay{4};

std::mutex queues_mutex;

// Never destroyed: connections may end when the process does.
std::map<files::Identity, std::weak_ptr<WriterQueue>>& Queues() {
  static auto* const queues = new std::map<files::Identity, std::weak_ptr<WriterQueue>>;
  return *queues;
}

}  // namespace

std::shared_ptr<WriterQueue> WriterQueue::Of(const Text& path) {
  const std::optional<files::Identity> identity = files::IdentityOf(path);
  if (!identity) return std::make_shared<WriterQueue>();
  const std::lock_guard lock(queues_mutex);
  std::erase_if(Queues(), [](const auto& entry) { return entry.second.expired(); });
  std::weak_ptr<WriterQueue>& kept = Queues()[*identity];
  std::shared_ptr<WriterQueue> queue = kept.lock();
  if (!queue) kept = queue = std::make_shared<WriterQueue>();
  return queue;
}

bool WriterQueue::Take(std::chrono::milliseconds longest) {
  const Clock::time_point start = Clock::now();
  const Clock::time_point deadline = start + longest;
  std::unique_lock lock(mutex_);
  if (!taken_ && !promised_) {
    taken_ = true;
    if (!watched_) since_ = start;
    return true;
  }
  if (!unwatched_.wait_until(lock, deadline, [&] { return !watched_; })) return false;
  watched_ = true;
  while (taken_ && Clock::now() < deadline) given_.wait_for(lock, kLook, [&] { return !taken_; });
  const bool is_free = !taken_;
  if (is_free) since_ = Clock::now();
  taken_ = true;
  watched_ = promised_ = false;
  unwatched_.notify_one();
  return is_free;
}

void WriterQueue::Give() noexcept {
  {
    const std::lock_guard lock(mutex_);
    taken_ = false;
    if (!watched_ || Clock::now() - since_ < kStay) return;
    promised_ = true;
  }
  given_.notify_one();
}

}  // namespace rebate
