#include "platform/automation/class_objects.h"

#include <map>
#include <mutex>
#include <utility>

#include "platform/automation/error.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<Text, ClassFactory> factories;
  SystemClasses system_classes;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

void RegisterClass(std::string_view program_id, ClassFactory factory) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  if (factory) {
    registry.factories[AsciiLower(program_id)] = std::move(factory);
  } else {
    registry.factories.erase(AsciiLower(program_id));
  }
}

bool IsClassRegistered(std::string_view program_id) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  return registry.factories.contains(AsciiLower(program_id));
}

void SetSystemClasses(SystemClasses classes) {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  registry.system_classes = std::move(classes);
}

ObjectRef CreateIfRegistered(std::string_view program_id) {
  ClassFactory factory;
  SystemClasses system_classes;
  {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.factories.find(AsciiLower(program_id));
    if (found != registry.factories.end()) factory = found->second;
    system_classes = registry.system_classes;
  }
  if (factory) return factory();
  return system_classes ? system_classes(program_id) : nullptr;
}

ObjectRef CreateObject(std::string_view program_id) {
  ObjectRef object = CreateIfRegistered(program_id);
  if (!object) {
    throw Error(error_number::kCannotCreate, "", "ActiveX component can't create object: " + Text(program_id));
  }
  return object;
}

}  // namespace rebate
