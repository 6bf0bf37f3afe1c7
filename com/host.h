#pragma once

namespace rebate::com {

// Lets the component reach what belongs to its host: classes that are registered with the system, stand-ins taking the
// place of login components that aren't, and the process cache under the desktop window. Done once for the process.
void ReachHost();

}  // namespace rebate::com
