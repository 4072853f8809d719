// velatra-tool stand: which stand the reports of a feed lead to.
#pragma once

#include <string>

namespace vlt {

struct StandOptions {
    std::string airportFile;
    double spanM = 34.1;  // of the aircraft, metres
    double radiusM = 55;  // within which a stand is searched
    bool allowFar = false;
    std::string category = "Large";
};

// Feed lines come from standard input; prints a JSON line for each report on the ground. The exit code;
// throws if the file holds no stands.
int gf_findStands(const StandOptions& options);

}  // namespace vlt
