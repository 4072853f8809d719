// The radius of the traffic by the user's phase of flight. Worker thread.
#pragma once

namespace vlt {

// With AUTO_RANGE on: sets LATERAL_RANGE by where the user is now.
void gf_adaptRange();

}  // namespace vlt
