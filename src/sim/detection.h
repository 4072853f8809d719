// Finding the installed simulator.
#pragma once

namespace vlt {

// Looks in the registry for an installed simulator and stores its path in ALL_INSTALL_PATH and
// SIM_INSTALL_PATH. Without one the program goes on if the user named folders to scan. Throws
// UserErrorException with what the user is to type. Worker thread.
void gf_detectSimulator();

}  // namespace vlt
