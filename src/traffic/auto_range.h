// The radius of the traffic by the user's phase of flight. Worker thread.
#pragma once

#include <cstdint>
#include <optional>

namespace vlt {

// The range in nm for a user on the ground or at `altitude` feet, `parkAirportNm` from the first park
// airport, if there is one.
int32_t gf_autoRange(bool onGround, double altitude, std::optional<double> parkAirportNm);

// With AUTO_RANGE on: sets LATERAL_RANGE by where the user is now.
void gf_adaptRange();

}  // namespace vlt
