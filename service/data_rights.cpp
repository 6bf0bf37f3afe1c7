#include "service/data_rights.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/automation/conversion.h"
#include "platform/login/login_components.h"
#include "platform/login/process_cache.h"
#include "platform/login/process_id.h"

namespace rebate {
namespace {

constexpr std::array<std::string_view, 14> kOuterLoginProperties{
    "UserName", "UserID", "PropsString", "LogStatus",   "AcctName", "AcctType", "Setuptype",
    "AcctID",   "SubID",  "AcctClosed",  "MachineName", "IP",       "UUID",     "TALLogin"};

constexpr std::string_view kNeedAuthrizeKey = "NeedAuthrize";
constexpr std::string_view kItemClassListKey = "AuthrizeItemClassList";

constexpr Long kSharedProperties = 0;
constexpr Long kOuterLogin = 1;

// Set once NeedAuthrize has asked the security component on the thread.
thread_local bool asked_on_this_thread = false;

void Write(const ObjectRef& cache, const Text& key, const Variant& value) {
  Variant arguments[] = {key, value};
  cache->Put("", arguments);
}

Variant FetchNeedAuthrize() {
  LoginComponent security = LoginComponent::ThroughCreator(login_component::kSecurityInfo);
  Variant outcome = security.Call("NeedAutorized", {GetProperty("PropsString")});
  SetProcessCache(Text(kNeedAuthrizeKey), outcome);
  return outcome;
}

// The component, or nothing where it can't be created.
std::optional<LoginComponent> Created(std::string_view program_id) {
  try {
    return LoginComponent(program_id);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

// Where the login properties are kept: a facade that is missing or fails leaves them to the shared ones.
Long PropertyMode(std::optional<LoginComponent>& facade, Long process_id) {
  if (!facade) return kSharedProperties;
  try {
    return ToLong(facade->Call("GetItem", {"IsOuterLogin", process_id}));
  } catch (const std::exception&) {
    return kSharedProperties;
  }
}

// A property may be an object or a plain value: the first call tells which, the second fetches it.
Variant FetchProperty(LoginComponent& source, std::string_view member, const Text& name, Long process_id) {
  bool is_object = false;
  try {
    is_object = source.Call(member, {name, process_id}).IsObject();
  } catch (const std::exception&) {
    // The second call decides.
  }
  Variant value = source.Call(member, {name, process_id});
  return value.IsObject() == is_object ? value : Variant();
}

bool IsOuterLoginProperty(std::string_view name) {
  return std::find(kOuterLoginProperties.begin(), kOuterLoginProperties.end(), name) != kOuterLoginProperties.end();
}

}  // namespace

bool NeedAuthrize() {
  try {
    if (!asked_on_this_thread) {
      FetchNeedAuthrize();
      asked_on_this_thread = true;
    }
    Variant needed = GetProcessCache(Text(kNeedAuthrizeKey));
    if (needed.IsEmpty()) needed = FetchNeedAuthrize();
    return ToBoolean(needed);
  } catch (const std::exception&) {
    return false;
  }
}

Text AuthrizeItemClassList() {
  Variant classes = GetProcessCache(Text(kItemClassListKey));
  if (classes.IsEmpty()) {
    classes = LoginComponent(login_component::kGlData).Call("GetAuthItemClassList");
    if (const ObjectRef cache = FindProcessCache()) Write(cache, Text(kItemClassListKey), classes);
  }
  return ToText(classes);
}

Variant GetProperty(const Text& name) {
  const Long process_id = CurrentProcessId();
  std::optional<LoginComponent> facade = Created(login_component::kCacheFacade);
  const Long mode = PropertyMode(facade, process_id);
  try {
    if (mode == kOuterLogin && IsOuterLoginProperty(name)) return FetchProperty(*facade, "GetItem", name, process_id);
    if (mode == kSharedProperties) {
      LoginComponent shared(login_component::kShareProps);
      return FetchProperty(shared, "GetProperty", name, process_id);
    }
  } catch (const std::exception&) {
    return {};
  }
  return {};
}

Variant GetProcessCache(const Text& key, const Variant& fallback) {
  try {
    const ObjectRef cache = FindProcessCache();
    if (!cache) return fallback;
    Variant look_up[] = {key};
    if (!ToBoolean(cache->Invoke("LookUp", look_up))) return fallback;
    Variant item[] = {key};
    return cache->Invoke("", item);
  } catch (const std::exception&) {
    return fallback;
  }
}

void SetProcessCache(const Text& key, const Variant& value) {
  Write(FindProcessCache(), key, value);
}

}  // namespace rebate
