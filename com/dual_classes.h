#pragma once

#include <windows.h>

#include "platform/automation/object.h"

namespace rebate::com {

class Bridge;

// A public class as the type library declares it: what its instances answer to over their vtables, too.
struct DualClass {
  CLSID class_id;
  IID interface_id;
  Bridge* (*bridge)(ObjectRef object, const DualClass& dual);
};

// The class of an instance; null for any other object.
const DualClass* DualClassOf(const Object& object);

}  // namespace rebate::com
