#pragma once

#include <functional>

#include "platform/automation/object.h"

namespace rebate {

// The process-wide place of the cache that all components of a process share. Whoever owns the cache puts it there and
// takes it away; the component only reads and writes what is in it. The object answers by name to `LookUp(key)`
// (whether the key is there) and through its default member to a read and a write of the value under a key.
void PutProcessCache(ObjectRef cache);

// Takes the cache out of its place; it lives on while somebody holds it.
void DropProcessCache();

// Where a cache may stand that nobody has put here: gives the null reference where there is none. An empty function, as
// at the start, looks nowhere else.
using ProcessCacheFinder = std::function<ObjectRef()>;
void SetProcessCacheFinder(ProcessCacheFinder finder);

// The cache in its place, null where there is none. It is meant for one read or write and not to be kept: it may be
// borrowed from its owner.
ObjectRef FindProcessCache();

}  // namespace rebate
