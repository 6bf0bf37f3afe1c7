#pragma once

#include <windows.h>

#include <span>

#include "platform/automation/object.h"

namespace rebate::com {

// A class that clients create: the public ones of the type library, and the two containers for clients that have none.
struct CreatableClass {
  std::string_view name;  // behind the library's name and a point in its program identifier
  CLSID class_id;
  bool in_type_library;
  ObjectRef (*create)();

  Text program_id() const;
};

std::span<const CreatableClass> CreatableClasses();

// Null for an identifier of no class of this component's.
const CreatableClass* FindCreatableClass(REFCLSID id);

}  // namespace rebate::com
