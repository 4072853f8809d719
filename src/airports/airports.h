// The records of the airport rooms, and the park airport: the one airport whose stands are known.
//
// The worker owns all of it. Stands are referred to by index, never by pointer, because the list is built
// anew with each load. Positions in degrees, angles in radians, distances in nm unless named otherwise.
#pragma once

#include "core/base/hours.h"
#include "core/base/shared_value.h"
#include "core/base/units.h"
#include "traffic/traffic.h"

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vlt {

// One airport of the catalogue.
struct AirportRecord {
    std::string code;  // ICAO
    std::string iata;  // may be empty
    double lat = 0;
    double lon = 0;
    double altitude = 0;  // feet
};

// An aircraft that stood at a stand on this day in these half hours.
struct StandOption {
    std::string airline;
    std::string type;
    std::string reg;        // registration, or the call sign where none was known
    std::string callsign;   // under which the aircraft came or was seen
    std::string coupledCs;  // the call sign of its next flight, may be empty
    HoursSet hours;
    int32_t sequence = 0;  // from 1 within the stand; 0: switched off until the next renumbering
    int32_t day = 0;       // 1 Monday to 7 Sunday; 0 was not given
    bool archived = true;  // read from an archived or handmade file, not learned
    bool real = true;      // seen there; false: inferred
};

// Where and when a live aircraft was last recorded at a stand.
struct Sighting {
    HourStamp stamp;
    int32_t sequence = 0;  // of the option that it was recorded in; 0: it stood in one already
};

// 64-bit FNV-1a over the four bytes of a hexid, low byte first.
struct HexidHash {
    size_t operator()(uint32_t hexid) const
    {
        uint64_t hash = 0xcbf29ce484222325;
        for (int shift = 0; shift < 32; shift += 8) {
            hash = (hash ^ (hexid >> shift & 0xff)) * 0x100000001b3;
        }
        return hash;
    }
};
using Sightings = std::unordered_map<uint32_t, Sighting, HexidHash>;  // by hexid

inline constexpr double kAirportRadius = 5.0;             // nm around the reference point: at the airport
inline constexpr double kStandReach = 55 / kMetresPerNm;  // nm off its centre: at a stand, looked at widely

// More stands than any airport has; a file beyond is refused.
inline constexpr size_t kMostStands = 5000;

inline constexpr uint32_t kNobody = 0;  // no live aircraft has this hexid

// A stand.
struct ParkPos {
    std::vector<StandOption> options;  // in file order
    Sightings realSightings;           // of this visit
    Sightings softSightings;
    std::string id;
    std::vector<uint32_t> neighbours;  // indices of the stands whose circles reach this one, ascending
    double lat = 0;
    double lon = 0;
    double heading = 0;                 // of a parked aircraft, true
    double radius = 0;                  // of the circle that the parked aircraft may fill
    uint32_t index = kNoStand;          // from 1, the place in the list
    uint32_t occupiedByLive = kNobody;  // hexid of the live aircraft that has a claim to it
    bool manual = false;                // added by hand in a learned file
    bool radiusChanged = false;         // learned; overrides the archived radius
    bool cargoChanged = false;          // learned; overrides the archived flag
    bool reserved = false;              // closed to static parking: for the user
    bool planned = false;               // the planning under way has an aircraft for it
    bool neighbourPlanned = false;      // or for a neighbour
    bool cargo = false;
    bool ramp = false;  // not a gate
    bool heli = false;
};

// How much is known of an airport's parking, each 0 to 100, or -1 when unknown.
struct Quality {
    int32_t real = -1;
    int32_t soft = -1;
    bool operator==(const Quality&) const = default;
};

// An airport file as read.
struct Apf {
    std::string code;
    std::string name;
    std::string bglPath;
    std::string publisher;
    int32_t trafficWeek = 0;  // of the traffic data behind an archived file, 0 unknown
    Quality quality;
    int32_t altitude = 0;   // feet
    bool handmade = false;  // the user's own stands replaced the archived ones
    std::vector<ParkPos> stands;
};

// An airport that may become the park airport.
struct ParkListEntry {
    std::string code;
    std::string stand;  // id of its reserved stand, may be empty
    double lat = 0;
    double lon = 0;
    double distance = 0;  // nm to the user at the last check
};
extern std::list<ParkListEntry> parkAirports;  // [worker] by distance

extern Apf parkApf;  // [worker] the park airport; an empty code: there is none

// The stand with this index of the park airport, nullptr for kNoStand and an index beyond the list. Good
// until the list is built anew.
ParkPos* gf_stand(uint32_t index);

// An aircraft that is to be placed on a stand.
struct PlanEntry {
    uint32_t stand = kNoStand;
    int32_t offset = 0;  // half hours back at which the stand's history knows it; 0: now
    std::string airline;
    std::string type;
    std::string callsign;
    std::string coupledCs;
    std::string reg;
    bool real = true;   // seen there; false: inferred
    bool stays = true;  // it is still there in the next half hour
};
extern std::vector<PlanEntry> parkPlan;  // [worker] to be placed; taken from its back

extern std::string reservedStand;         // [worker] id of the stand that stays free for the user, or empty
extern bool softLearningAllowed;          // [worker] the park airport's real data aren't good enough
extern SharedValue<int32_t> updateCount;  // [worker] what was learned since the load; the window shows it

// How far the park airport is known.
enum class ParkState : int32_t {
    None,     // there is none
    InSight,  // its place is known; the next look loads its file
    Loaded,   // its stands are known
};
extern SharedValue<ParkState> parkState;  // [worker]

// 1 to 8 letters or digits: fit to become part of a file name or an address.
bool gf_isAirportCode(std::string_view code);

}  // namespace vlt
