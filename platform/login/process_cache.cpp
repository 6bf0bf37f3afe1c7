#include "platform/login/process_cache.h"

#include <mutex>
#include <utility>

namespace rebate {
namespace {

struct Place {
  std::mutex mutex;
  ObjectRef cache;
  ProcessCacheFinder finder;
};

Place& ThePlace() {
  static Place place;
  return place;
}

}  // namespace

void PutProcessCache(ObjectRef cache) {
  Place& place = ThePlace();
  const std::lock_guard lock(place.mutex);
  std::swap(place.cache, cache);
}

void DropProcessCache() {
  PutProcessCache(nullptr);
}

void SetProcessCacheFinder(ProcessCacheFinder finder) {
  Place& place = ThePlace();
  const std::lock_guard lock(place.mutex);
  std::swap(place.finder, finder);
}

ObjectRef FindProcessCache() {
  Place& place = ThePlace();
  ProcessCacheFinder finder;
  {
    const std::lock_guard lock(place.mutex);
    if (place.cache) return place.cache;
    finder = place.finder;
  }
  return finder ? finder() : nullptr;
}

}  // namespace rebate
