// The aircraft of the virtual simulator: what the simulator holds of each, and each one's life
// story.
//
// Plain records, copied by value; owned by VirtualSimulator and guarded by its lock.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vlt {

// The light switches, as the simulator numbers them in its "LIGHT STATES" mask.
enum SimLight : uint32_t {
    kLightNav = 0x001,
    kLightBeacon = 0x002,
    kLightLanding = 0x004,
    kLightTaxi = 0x008,
    kLightStrobe = 0x010,
    kLightLogo = 0x100,
    kLightCabin = 0x200,
};

// A title that the simulator can create.
struct InstalledTitle {
    std::string title;
    std::string model;       // the "ATC MODEL" of its file
    std::string category;    // as in the world's tables
    double cgFt = 8.0;       // centre of gravity above the wheels' ground
    double staticPitch = 0;  // radians, negative nose up
};

struct SimObject {
    uint32_t id = 0;
    InstalledTitle kind;
    std::string tailNumber;    // "ATC ID"
    bool byClient = false;     // created by the connected program
    double lat = 0;            // degrees
    double lon = 0;            // degrees
    double altitude = 0;       // feet, of the centre of gravity
    double pitch = 0;          // radians, negative nose up
    double bank = 0;           // radians, negative right wing down
    double heading = 0;        // radians true
    double verticalSpeed = 0;  // feet per second, as written
    double tas = 0;            // knots, as written; the user's ground speed
    double spoilers = 0;       // percent
    double throttle1 = 0;      // percent, of the first engine's lever
    double throttle2 = 0;      // percent, of the second's
    uint32_t lights = 0;       // SimLight bits
    uint32_t flaps = 0;        // 0 to 16383
    uint32_t throttle = 0;     // 0 to 16383, by event
    bool gearDown = true;
    bool enginesOn = false;
    bool released = false;  // from the control of the simulator's own AI
    bool frozenPosition = false;
    bool frozenAltitude = false;
    bool frozenAttitude = false;
    bool positioned = false;  // the program has written a position
    double fallSpeed = 0;     // feet per second, of one that nobody holds up
    double createdAt = 0;     // seconds
};

// One look at an object.
struct TrackPoint {
    double time = 0;  // seconds of the simulator's clock
    double lat = 0;
    double lon = 0;
    double altitude = 0;
    double heading = 0;
    double pitch = 0;
    double bank = 0;
    double tas = 0;
    double agl = 0;
    bool onGround = false;
    bool gearDown = false;
    uint32_t flaps = 0;
    uint32_t lights = 0;
};

inline constexpr double kNeverInLife = -1;

// What becomes of an object, told afterwards. Times in seconds, kNeverInLife for what didn't
// happen.
struct ObjectLife {
    uint32_t id = 0;
    std::string title;
    std::string model;
    std::string category;
    std::string tailNumber;
    bool byClient = false;
    double createdAt = kNeverInLife;
    double releasedAt = kNeverInLife;
    double frozenAt = kNeverInLife;  // all three freezes on
    double firstPositionAt = kNeverInLife;
    double lastPositionAt = kNeverInLife;
    double removedAt = kNeverInLife;
    uint64_t positions = 0;
    uint64_t events = 0;
    double worstStepFeet = 0;  // the largest single step beyond what its speed allows
    double worstStepAt = kNeverInLife;
    std::vector<TrackPoint> track;
};

// The ground under the world: a plane that rises towards the north.
struct Terrain {
    double elevation = 0;  // feet, at `originLat`
    double slopeFtPerNm = 0;
    double originLat = 0;
};

// Feet above sea level.
double gf_groundElevation(const Terrain& terrain, double lat);

// The wheels touch, or are pressed into, the ground.
bool gf_onGround(const SimObject& object, double groundElevation);

// Lets `seconds` pass for an object of the simulator's: one that isn't frozen falls, drifts and
// rolls as its AI flies it, so that a freeze that was forgotten shows.
void gf_moveUnfrozen(SimObject& object, double groundElevation, double now, double seconds);

TrackPoint gf_trackPoint(const SimObject& object, double groundElevation, double now);

}  // namespace vlt
