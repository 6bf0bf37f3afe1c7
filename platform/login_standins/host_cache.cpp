#include "platform/login_standins/host_cache.h"

#include <map>
#include <mutex>

#include "platform/automation/dispatch.h"
#include "platform/login_standins/login_standins.h"

namespace rebate {
namespace {

// What the calling thread's data source says of an entry that the whole process shares otherwise: rights that one data
// source names are never another one's.
std::optional<Variant> OfSource(const Text& key) {
  if (key != "NeedAuthrize" && key != "AuthrizeItemClassList") return std::nullopt;
  const std::optional<Text> rights = RightsOfSource();
  if (!rights) return std::nullopt;
  return key == "NeedAuthrize" ? Variant(true) : Variant(*rights);
}

class ProcessCache : public Object {
 public:
  bool LookUp(const Text& key) {
    if (OfSource(key)) return true;
    const std::lock_guard lock(mutex_);
    return entries_.contains(key);
  }
  Variant Item(const Text& key) {
    if (auto value = OfSource(key)) return std::move(*value);
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(key);
    return found == entries_.end() ? Variant() : found->second;
  }
  void SetItem(const Text& key, const Variant& value) {
    if (OfSource(key)) return;
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
