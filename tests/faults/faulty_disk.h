#pragma once

namespace rebate {

// Puts a file system in front of the engine's own one that gives the errors of a full or failing disk at the fault
// points Open, Read, Write and Sync.
void InstallFaultyDisk();

// The name under which the engine's own file system can still be had.
const char* SoundDisk();

}  // namespace rebate
