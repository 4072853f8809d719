// The two switches that ask for a scan.
//
// User thread, or the worker. No state but the parameters.
#pragma once

namespace vlt {

// What a click on the box of SCAN_LIVERIES (`liveries`) or SCAN_AIRPORTS does: sets the switch, saves it and
// tells the user what follows. `settingsOpen`, true from a run.s reset until RealTraffic has connected:
// switched on, the scan happens at once, in a new run.
void gf_switchScan(bool liveries, bool on, bool settingsOpen);

}  // namespace vlt
