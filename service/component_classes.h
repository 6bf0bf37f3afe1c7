#pragma once

#include <span>
#include <string_view>

#include "platform/automation/object.h"

namespace rebate {

// One public class: its identity in the automation world and how an instance is made.
struct ComponentClass {
  std::string_view name;
  std::string_view class_id;
  std::string_view interface_name;  // its default dual interface
  std::string_view interface_id;
  ObjectRef (*create)();
};

struct ComponentLibrary {
  std::string_view name;
  std::string_view id;
  int major_version;
  int minor_version;
  std::span<const ComponentClass> classes;
};

// The component's identity: the one table that its class objects and its type library are made from.
const ComponentLibrary& TheComponent();

// Null for a name that is none of the component's classes (compared without regard to case).
const ComponentClass* FindComponentClass(std::string_view name);

// Puts the classes under their program identifiers, library and class name with a dot between, so that CreateObject
// makes them.
void RegisterComponent();

}  // namespace rebate
