#include "platform/database/embedded/writer_turn.h"

#include <map>

namespace rebate {
namespace {

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
  std::unique_lock lock(mutex_);
  if (!given_.wait_for(lock, longest, [&] { return !taken_; })) return false;
  taken_ = true;
  return true;
}

void WriterQueue::Give() noexcept {
  {
    const std::lock_guard lock(mutex_);
    taken_ = false;
  }
  given_.notify_one();
}

}  // namespace rebate
