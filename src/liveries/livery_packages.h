// Where add-on aircraft lie, as the simulator's own lists tell: add-ons.cfg with the add-on.xml of each
// package, and simobjects.cfg.
//
// Worker thread; no state. What is found, and what is missing, is logged.
#pragma once

#include <string>
#include <vector>

namespace vlt {

// Adds the folders of add-ons.cfg and what it points to, in the Windows form.
void lf_readP3DAddOnsAircraft(std::vector<std::string>& searchList);

// Adds the folders of simobjects.cfg, those of the simulator's own stock apart.
void readSimobjectsCfg(std::vector<std::string>& searchList);

// The folders of simulation objects that the text of an add-on.xml names; relative ones lie below `package`.
std::vector<std::string> gf_simobjectFolders(const std::vector<std::string>& lines,
                                             const std::string& package);

}  // namespace vlt
