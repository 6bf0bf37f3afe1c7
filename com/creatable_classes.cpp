#include "com/creatable_classes.h"

#include <vector>

#include "com/wide_text.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "service/component_classes.h"

namespace rebate::com {
namespace {

constexpr CLSID kVector{0x968932D6, 0x392E, 0x420C, {0x8C, 0xEE, 0x4A, 0xB2, 0xA3, 0xD2, 0x1A, 0x9B}};
constexpr CLSID kDictionary{0x5A3EF07B, 0xD9C8, 0x4B17, {0x8A, 0xE0, 0x2E, 0xA2, 0x4E, 0xA5, 0xE9, 0x23}};

template <typename Container>
ObjectRef Create() {
  return New<Container>();
}

CLSID ClassId(std::string_view text) {
  CLSID id{};
  CLSIDFromString(Wide(text).c_str(), &id);
  return id;
}

std::vector<CreatableClass> AllClasses() {
  std::vector<CreatableClass> classes;
  for (const ComponentClass& entry : TheComponent().classes) {
    classes.push_back({entry.name, ClassId(entry.class_id), true, entry.create});
  }
  classes.push_back({Vector::kClassName, kVector, false, &Create<Vector>});
  classes.push_back({Dictionary::kClassName, kDictionary, false, &Create<Dictionary>});
  return classes;
}

}  // namespace

Text CreatableClass::program_id() const {
  return Text(TheComponent().name) + "." + Text(name);
}

std::span<const CreatableClass> CreatableClasses() {
  static const std::vector<CreatableClass> classes = AllClasses();
  return classes;
}

const CreatableClass* FindCreatableClass(REFCLSID id) {
  for (const CreatableClass& entry : CreatableClasses()) {
    if (entry.class_id == id) return &entry;
  }
  return nullptr;
}

}  // namespace rebate::com
