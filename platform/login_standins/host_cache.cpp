#include "platform/login_standins/host_cache.h"

#include <map>
#include <mutex>

#include "platform/automation/dispatch.h"

namespace rebate {
namespace {

class ProcessCache : public Object {
 public:
  bool LookUp(const Text& key) {
    const std::lock_guard lock(mutex_);
    return entries_.contains(key);
  }
  Variant Item(const Text& key) {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(key);
    return found == entries_.end() ? Variant() : found->second;
  }
  void SetItem(const Text& key, const Variant& value) {
    const std::lock_guard lock(mutex_);
    entries_[key] = value;
  }

  const MemberTable& Members() const override {
    static const MemberTable members{
        dispatch::Method("LookUp", &ProcessCache::LookUp, {"Key"}),
        dispatch::Property("", &ProcessCache::Item, {"Key"}),
        dispatch::PropertyPut("", &ProcessCache::SetItem, {"Key", "Value"}),
    };
    return members;
  }

 private:
  std::mutex mutex_;
  std::map<Text, Variant> entries_;
};

}  // namespace

ObjectRef NewProcessCache() {
  return New<ProcessCache>();
}

}  // namespace rebate
