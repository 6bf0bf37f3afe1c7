#include "platform/automation/class_objects.h"

#include <map>
#include <mutex>
#include <utility>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<Text, ClassFactory> factories;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

Text Folded(std::string_view program_id) {
  Text folded(program_id);
  for (char& c : folded) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return folded;
}

}  // namespace

void RegisterClass(std::string_view program_id, ClassFactory factory) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  if (factory) {
    registry.factories[Folded(program_id)] = std::move(factory);
  } else {
    registry.factories.erase(Folded(program_id));
  }
}

bool IsClassRegistered(std::string_view program_id) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  return registry.factories.contains(Folded(program_id));
}

ObjectRef CreateObject(std::string_view program_id) {
  ClassFactory factory;
  {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.factories.find(Folded(program_id));
    if (found != registry.factories.end()) factory = found->second;
  }
  if (!factory) {
    throw Error(error_number::kCannotCreate, "", "ActiveX component can't create object: " + Text(program_id));
  }
  return factory();
}

}  // namespace rebate
