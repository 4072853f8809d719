// The stand that stays free for the user: the one that the user's list names, and the one where the user
// stands.
//
// Worker thread. No state beside the stands' and the list's; the list's file follows.
#pragma once

namespace vlt {

// After a load, or when the user's stand was noted: takes the user's stand into the list, finds the
// reserved stand, and marks the stands that are closed to static parking.
void updateReservedStand();

// Shows the name of the stand at which the user is.
void gf_showUserStand();

// Stores the stand at which the user stands, if the simulator client has asked for that.
void gf_noteUserStand();

}  // namespace vlt
