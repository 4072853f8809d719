// The records of an archived airport file: an airport, its stands, and who stood on them.
//
// Plain values.
#pragma once

#include "core/base/hours.h"

#include <string>
#include <vector>

namespace vlt {

// Who stood at a stand on a day of the week, and in which half hours.
struct ArchivedOption {
    std::string reg;
    std::string airline;  // written with `type` only when the data base doesn't know the registration
    std::string type;
    std::string callsigns;  // one, or two coupled ones with ":" between; may be empty
    HoursSet hours;
    int day = 1;  // 1 Monday to 7 Sunday
    bool soft = false;
    bool known = false;  // the data base knows the registration
};

struct ArchivedStand {
    std::string id;
    double lat = 0;
    double lon = 0;
    double headingDeg = 0;
    double radiusM = 0;
    std::string kind;  // "gate", "ramp", "cargo" or "heli"
    std::vector<ArchivedOption> options;
};

struct ArchivedAirport {
    std::string code;
    std::string iata;
    std::string name;
    double lat = 0;
    double lon = 0;
    int elevation = 0;  // feet
    std::vector<ArchivedStand> stands;
    std::string publisher = "stock";
};

}  // namespace vlt
