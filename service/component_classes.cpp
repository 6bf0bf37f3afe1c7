#include "service/component_classes.h"

#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/rebate_rule_mgr.h"

namespace rebate {
namespace {

template <typename Class>
ObjectRef Create() {
  return New<Class>();
}

constexpr ComponentClass kClasses[] = {
    {"BaseInfoMgr", "{8110194C-AA6C-49DA-92A9-E8AA3B47172F}", "_BaseInfoMgr", "{A3CA1589-EB41-40F4-862D-8DE7B13FE393}",
     &Create<BaseInfoMgr>},
    {"RebateRuleMgr", "{E126F2CF-2C24-433E-812B-8C3196EDFFF5}", "_RebateRuleMgr",
     "{8D93EA6A-FC40-4E02-905F-69AF8F9C3574}", &Create<RebateRuleMgr>},
};

constexpr ComponentLibrary kLibrary{"TALMRebateRuleMgr", "{10EE77DD-EB6E-4F76-ADED-4C1C0AED693C}", 2, 3, kClasses};

}  // namespace

const ComponentLibrary& TheComponent() {
  return kLibrary;
}

const ComponentClass* FindComponentClass(std::string_view name) {
  for (const ComponentClass& entry : kClasses) {
    if (EqualsIgnoreCase(entry.name, name)) return &entry;
  }
  return nullptr;
}

void RegisterComponent() {
  for (const ComponentClass& entry : kClasses) {
    RegisterClass(Text(kLibrary.name) + "." + Text(entry.name), entry.create);
  }
}

}  // namespace rebate
