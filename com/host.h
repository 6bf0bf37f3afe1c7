#pragma once

namespace rebate::com {

// Lets the component reach what belongs to its host: classes that are registered with the system, and the process cache
// under the desktop window. Done once for the process.
void ReachHost();

}  // namespace rebate::com
