#pragma once

#include "platform/automation/variant.h"

namespace rebate {

// The logged-in user's data rights, asked of the system's login components and kept in the process-wide cache that
// other components share. Nothing here touches a database.

// Whether reads and writes must respect the user's data rights. The first call on a thread asks the security component
// whatever the cache holds; later ones read the cache. False where the answer can't be had; never raises.
bool NeedAuthrize();

// The item classes to which the user's data rights apply, to be searched by substring. Raises what the component that
// answers raises. Without a cache in the process it still gives the component's answer.
Text AuthrizeItemClassList();

// A login property; Empty where it can't be had. Never raises.
Variant GetProperty(const Text& name);

// The value under a key of the process-wide cache, `fallback` where there is no such key, no cache, or it fails.
Variant GetProcessCache(const Text& key, const Variant& fallback = {});

// Writes a value into the process-wide cache. Raises 91 where there is none.
void SetProcessCache(const Text& key, const Variant& value);

}  // namespace rebate
