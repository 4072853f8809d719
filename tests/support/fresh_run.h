// The engine as at the start of a run, whatever a test before has left.
#pragma once

namespace vlt {

// Everything that a run's reset puts back, all parameters at their defaults, no stop under way, and the tick
// at 100'000, so that a time may lie before it.
void gf_freshRun();

}  // namespace vlt
