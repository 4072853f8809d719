// One Velatra at a time: the lock that the first process takes and keeps until it ends.
//
// Called once, by the user thread at the start. The lock is let go by the system, so a crash leaves
// nothing behind.
#pragma once

namespace vlt {

// True if this process now holds the lock, false if another one does. A system that can't keep the
// lock at all (no folder for it) doesn't stop the program: true as well.
[[nodiscard]] bool gf_takeInstanceLock();

}  // namespace vlt
