#pragma once

#include "platform/automation/object.h"

namespace rebate {

// A process cache of the kind that a host puts in place: keys compare exactly, entries never expire. It may be used
// from any thread.
ObjectRef NewProcessCache();

}  // namespace rebate
