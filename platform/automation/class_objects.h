#pragma once

#include <functional>
#include <string_view>

#include "platform/automation/object.h"
#include "platform/values/types.h"

namespace rebate {

// Makes instances of one class. Creating is the only thing that it does.
using ClassFactory = std::function<ObjectRef()>;

// Puts a class under its program identifier (compared without regard to case) for the whole process, in place of one
// that stands there; a null factory takes it away. A host registers its own components in this way.
void RegisterClass(std::string_view program_id, ClassFactory factory);

// Whether a class was put under the program identifier.
bool IsClassRegistered(std::string_view program_id);

// Makes objects of the classes that are registered with the system: the null reference where there is no such class.
using SystemClasses = std::function<ObjectRef(std::string_view program_id)>;

// Asked for the classes that nobody has put here; an empty function, as at the start, takes that way away.
void SetSystemClasses(SystemClasses classes);

// A new object of the class, the null reference where none is registered. Raises what the factory raises.
ObjectRef CreateIfRegistered(std::string_view program_id);

// A new object of the class. Raises 429 where none is registered, and what the factory raises.
ObjectRef CreateObject(std::string_view program_id);

}  // namespace rebate
