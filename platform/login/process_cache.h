#pragma once

#include "platform/automation/object.h"

namespace rebate {

// The process-wide place of the cache that all components of a process share. Whoever owns the cache puts it there and
// takes it away; the component only reads and writes what is in it. The object answers by name to `LookUp(key)`
// (whether the key is there) and to `Item(key)` and `SetItem(key, value)`; its default member is `Item`.
void PutProcessCache(ObjectRef cache);

// Takes the cache out of its place; it lives on while somebody holds it.
void DropProcessCache();

// The cache in its place, null where there is none.
ObjectRef FindProcessCache();

// A cache of the kind that a host puts in place: keys compare exactly, entries never expire. It may be used from any
// thread.
ObjectRef NewProcessCache();

}  // namespace rebate
