// Scenery files (BGL) with airports, as a scenery's author would compile them: a writer that knows nothing of
// the reader.
//
// Pure; any thread. Throws std::invalid_argument for what the format can't hold.
#pragma once

#include <string>
#include <vector>

namespace vlt {

struct BglParkingPlan {
    std::string id;  // letters of the name and the number: "G12", "A3", "7"
    int type = 8;    // 1 to 4 ramp for light aircraft, 5 cargo, 6 and 7 military, 8 to 10 gate by size, 11
                     // dock, 12 fuel
    double radiusM = 0;
    double headingDeg = 0;
    double lat = 0;
    double lon = 0;
    std::vector<std::string> airlines;  // codes of at most four letters
};

struct BglHelipadPlan {
    double widthM = 0;
    double headingDeg = 0;
    double lat = 0;
    double lon = 0;
};

struct BglAirportPlan {
    std::string code;
    double elevationM = 0;
    bool newer = false;              // the newer form of the record
    std::vector<std::string> names;  // mostly one
    std::vector<BglHelipadPlan> helipads;
    std::vector<BglParkingPlan> parkings;
};

// The file: a header, a section of something else, the section of the airports, and between the airports a
// record that nobody needs.
std::string gf_bglFile(const std::vector<BglAirportPlan>& airports);

}  // namespace vlt
