// The records of the live traffic engine and the tables that hold them.
//
// An aircraft is a plain record in a global table, found by a linear scan. Everything is owned by the
// worker thread but for the hand-over points, whose lock stands in brackets. No reference to a record
// is kept across a cycle, because the vectors move: messages carry a hexid or an object id.
//
// Units where nothing else is said: positions in degrees, angles in radians, distances in nm, altitudes
// in feet, speeds in knots, times in ticks of 10 ms. Pitch follows the simulator: negative is nose up.
#pragma once

#include "core/base/clock.h"
#include "traffic/category.h"
#include "traffic/geodesy.h"

#include <array>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstdint>
#include <deque>
#include <limits>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vlt {

inline constexpr int32_t kTicksPerSecond = 100;
inline constexpr int32_t kTicksPerMinute = 60 * kTicksPerSecond;
inline constexpr int32_t kReplayDelayTicks = 3000;  // every aircraft runs this far behind its reports
inline constexpr int32_t kParkedAheadTicks =
    60'480'000;                                      // a week: so far ahead lies the sample of who is parked
inline constexpr uint32_t kLastStaticHexid = 10000;  // above it a hexid is a live aircraft's
inline constexpr int32_t kStandardQnh = 1013;        // hPa, in which altitudes are reported
inline constexpr uint32_t kNoObject = 0;             // no simulator object (yet)
inline constexpr uint32_t kNoStand = 0;              // no stand
inline constexpr uint32_t kNoThrottleLevel = 5;      // none commanded yet
inline constexpr uint32_t kNoFlapsLevel = 4;         // none commanded yet

// Presence in the simulator.
enum class FsState {
    Buffer,           // known from the feed, no object; samples collect in the stream
    Adding2Sim,       // the object has been asked for and not yet acknowledged
    Active,           // the object exists and is driven every tick
    LiveryRespawn,    // the object is being removed only to come back with another livery
    RemovingFromSim,  // the removal has been asked for; the record goes when the simulator confirms
};

// Phase of flight.
enum class StState {
    PushingBack,  // moving backwards out of a stand
    PushedBack,   // the push-back ended; waiting for the first taxi movement
    Taxi,         // moving on the ground, also a take-off run until rotation
    TakeOff,      // rotating and lifting off
    Flying,
    Parking,  // driving the last leg to a stand found for it
    Parked,   // at a stand
    Birth,    // until the first position is fixed at spawning
};
static_assert(StState::PushingBack < StState::PushedBack && StState::PushedBack < StState::Taxi,
              "what comes after a push-back is told by order");

// Identity and performance, common to every aircraft in the simulator.
struct AcBase {
    std::string airline;           // ICAO operator code; "PVT" without one
    std::string model;             // ICAO type designator
    std::string origin;            // airport code, may be empty
    std::string destination;       // airport code, may be empty
    std::string callsign;          // a trailing "_" marks a ghost, a trailing "*" a static aircraft
    std::string coupledCs1;        // first of the two call signs that stand history couples to this flight
    std::string coupledCs2;        // second one
    std::string regcode;           // registration, may be empty
    bool coupledSearched = false;  // the stand history was searched for coupled call signs
    double radius = 0;             // half the wing span, nm
    double staticCg = 0;           // feet from centre of gravity to ground; 0 until the simulator has told
    double staticPitch = 0;        // pitch at rest, as the simulator told
    double rotatePitch = 0;        // pitch of the take-off rotation
    double climbPitch = 0;         // pitch of the initial climb
    double turnRateNominal = 0;    // radians per tick, on the ground
    double maxClimbRate = 0;       // feet per tick
    double standSpeed = 0;         // knots, last leg to a stand and push-back
    uint32_t hexid = 0;            // above kLastStaticHexid the 24-bit address of a live aircraft
    AcCategory category = AcCategory::Large;
    std::string_view title;  // the chosen livery, a view into the master index; empty: none yet
    int32_t titleStep = 0;   // of the ladder that found it; 0: remembered from before
    int32_t flareTicks = 0;
    int32_t derotateTicks = 0;  // from touchdown to ground pitch
    int32_t rotateTicks = 0;
    int32_t initialClimbTicks = 0;  // from rotation pitch to climb pitch
    bool cargo = false;             // a freighter
    bool fsltl = false;             // a livery family that takes its reverse thrust as a negative throttle
};

// One reported position. Plain, copied by value.
struct PosSample {
    double lat = 0;
    double lon = 0;
    double roll = 0;  // radians, valid if rollValid
    bool rollValid = false;
    double heading = 0;  // radians true, valid if headingValid
    bool headingValid = false;
    double altitude = 0;         // feet; 0 means on the ground
    double speed = 0;            // knots over the ground
    double track = 0;            // degrees true
    double vs = 0;               // feet per minute
    double tas = 0;              // knots
    int32_t time = 0;            // the tick at which the aircraft is due here
    bool airborne = false;       // as told by height and speed, not by the feed
    bool stationary = false;     // at the position of the stream's sample before
    bool attitudeGiven = false;  // the feed gave a true heading
    bool turned = false;         // not reported: here a turn ends, the nose comes to `heading`
};
static_assert(std::is_trivially_copyable_v<PosSample>, "samples cross threads by plain copy");

// What the reader hands over: one report.
struct FeedRecord {
    std::string model;
    std::string origin;
    std::string destination;
    std::string callsign;
    std::string regcode;
    PosSample sample;
    double timestamp = 0;  // the feed's own, seconds since 1970
    uint32_t hexid = 0;
};

// A parked aircraft that is not live: an object without motion.
struct StaticAc : AcBase {
    uint32_t objectid = kNoObject;
    double standLat = 0;
    double standLon = 0;
    double standHeading = 0;  // radians
    HourStamp stamp;          // when it took this stand
    uint32_t standId = kNoStand;
    FsState fs = FsState::Buffer;
    uint32_t throttleLevel = kNoThrottleLevel;  // last commanded, 0 to 4
    uint32_t flapsLevel = kNoFlapsLevel;        // last commanded, 0 to 3
    // Of a static aircraft: its stand was inferred, not seen. Of a live one: its stand is a cargo stand;
    // aircraft and stand fit if both are cargo or neither.
    bool soft = false;
    bool removeWhenAdded = false;  // remove as soon as the simulator has acknowledged it
    bool eraseNow = false;         // no object; erase the record in this cycle
    bool eraseCancelled = false;   // its request was taken back in time; erase the record in this cycle
    std::string_view goesBecause;  // why it is being removed, a literal; empty while it stays
};

// Metres on the plane that touches the globe at some place, north + east * i: its argument is a bearing.
using Metres = std::complex<double>;

// The way of a leg: a cubic in the share of the leg's time that has passed.
struct Way {
    LatLon from;
    double degreesPerMetreEast = 0;
    std::array<Metres, 3> terms{};  // of the share, its square and its cube
    double share = 1;               // 1: nothing is laid, or all has been flown
    double perTick = 0;             // of the share
    double course = 0;              // radians, all along a way that doesn't bend
    bool bends = false;
};

// Stages of a push-back, counted down at each of its samples.
enum PushStage : int32_t { kNotPushed = 0, kPushTurns = 1, kPushStraight = 2 };

// A live aircraft. The fields stand in groups by phase; each group tells who sets it and who ends it. "For
// life" is what nobody takes back.
struct LiveAc : StaticAc {
    // Where the object is: fixed at spawning, moved by step_motion every tick. On the ground the simulator's
    // answers give the altitude.
    double lat = 0;
    double lon = 0;
    double pitch = 0;
    double bank = 0;
    double hdg = 0;
    double alt = 0;     // feet
    double vsOut = 0;   // feet per second, as sent; per leg
    double tasOut = 0;  // knots, as sent; 0 while the front sample is stationary; per leg
    double agl = 2500;  // feet above ground as the simulator told

    // The phase: changed by gf_setSt, at the place that knows of the change.
    StState st = StState::Birth;
    StState prevSt = StState::Birth;
    bool onGround = false;  // driven as a ground object: from the answer or touchdown to the rotation

    // The reports: intake and stream append, legs drops what was flown, stream_end invents what is missing.
    std::deque<PosSample> stream;  // by time, strictly rising; the front is travelled from, the next one to
    double feedTime = 0;           // feed time stamp of the last accepted sample, seconds
    int32_t extendCount = 0;       // invented samples still to come; 0 none, -1 used up

    // The leg in progress: set by legs and the motions, added up by step_motion.
    int32_t frontDue = 0;  // tick at which the sample that it leaves was due; 0 before the first leg
    Way way;
    Metres velocity;       // per tick, at the moment; 0 while it stands
    double pitchRate = 0;  // radians per tick
    double bankRate = 0;
    double hdgRate = 0;          // towards a reported heading
    bool followsCourse = false;  // the nose goes where the way leads, no heading was reported
    bool backwards = false;      // tail first, as the reports tell
    double altRate = 0;          // feet per tick
    double targetVs = 0;         // feet per minute, of the next sample
    double speedOut = 0;         // knots, of the next sample; negative while pushing back
    double trackTarget = 0;      // bearing of the leg in progress

    // Waiting: begun by stream_end at the end of the reports, or after a push-back; ended by a report.
    bool holding = false;
    int32_t holdStart = 0;  // tick

    // Before it appears: set and cleared at the gate.
    bool heldForUser = false;  // held back because it would appear in the user's way

    // In the air: set by air_config.
    bool approach = false;  // configured for landing at the user's airport, until the roll-out or a climb
    bool climbConfigured = false;  // until the next approach or take-off
    bool cruiseLights = false;  // lights for above 10000 ft are set, until it comes below for the first time
    bool belowLights = false;   // lights for below 10000 ft are set; for life

    // Take-off: begun by runway, ended by air_config above the initial climb, or by a touchdown after it
    // failed.
    bool takeOff = false;    // a take-off run or climb out is in progress
    int32_t phaseTicks = 1;  // countdown of rotation and initial climb; 1 outside them

    // Flare and landing: flareStep and onTouchdown set, rollOutConfig ends; a rotation ends the roll too.
    uint32_t flareStage = 0;           // 0 none, 1 to 4
    double flareHeight = 0;            // feet, from which the flare is judged
    std::optional<double> groundElev;  // feet, under an aircraft in the flare
    bool touchdownBlend = false;       // pitch and bank are being brought to ground values
    bool landingRoll = false;
    double landingHdg = 0;  // at touchdown
    bool landed = false;    // came from a landing seen here, until it leaves its stand or takes off

    // At a stand: stand_holding and arrival set; `checkAtStand` judges the reports.
    double lastParkLat = 0;  // where a stand was last searched; 0 none
    double lastParkLon = 0;
    int32_t parkedSince = 0;    // tick
    bool liveAtStand = false;   // it still receives samples; until its reports end
    double standDistFirst = 0;  // nm from the stand, first sample at it
    double standDistLast = 0;   // nm, latest
    int32_t growingDist = 0;    // successive samples that moved away from the stand
    int32_t leavesAt = 0;       // tick at which the first of them is due
    bool towed = false;         // left its stand too soon after landing; for life

    // Leaving a stand: begun by ground_motion and stand_moves, ended by the first taxi movement.
    bool pullOutPending = false;  // the reports lead away
    int32_t pushStage = kNotPushed;
    PosSample pushExitSample;  // second leg of a push-back, to the other side
    bool pushTurnRight = false;
    bool pushTurnKnown = false;
    double pushedBackDist = 0;  // nm to the latest report since the push-back ended

    // Beside all phases.
    bool flightPlanLoaded = false;  // for life
    double lastCheckLat = 0;        // position at the last check against static aircraft
    double lastCheckLon = 0;
};

// A request for an object.
struct CreateRequest {
    double lat = 0;
    double lon = 0;
    double altitude = 0;  // feet
    double pitch = 0;     // degrees
    double bank = 0;      // degrees
    double heading = 0;   // degrees
    bool onGround = false;
    std::string tailNumber;  // shows up as the object's ATC ID
    std::string_view title;
    uint32_t hexid = 0;
};

// A position to be sent.
struct PositionRecord {
    uint32_t objectid = kNoObject;
    double lat = 0;
    double lon = 0;
    double pitch = 0;
    double bank = 0;
    double hdg = 0;
    double alt = 0;
    double vsOut = 0;   // feet per second
    double tasOut = 0;  // knots
};

enum class SimMessageKind {
    LiveObject,    // new live object: a hexid, b ticks since, y feet above ground
    StaticObject,  // new static object: a hexid, b ticks since
    ObjectRemoved,
    ObjectData,       // a 1 on the ground, x ground altitude, y feet above ground
    StaticData,       // x centre of gravity above ground in feet, y static pitch in radians
    CreationRefused,  // a hexid
};

// What comes back from the SimClient thread.
struct SimMessage {
    uint32_t objectid = kNoObject;
    uint32_t a = 0;
    uint32_t b = 0;
    SimMessageKind kind = SimMessageKind::ObjectData;
    double x = 0;
    double y = 0;
};

// The user's aircraft as the simulator reports it.
struct UserAc {
    double lat = 0;  // degrees
    double lon = 0;
    double pitch = 0;  // radians
    double bank = 0;
    double heading = 0;
    double altitude = 0;   // feet
    double agl = 0;        // feet
    double speed = 0;      // knots over the ground
    int64_t zuluTime = 0;  // seconds of the day
    int64_t zuluDay = 0;   // of the year
    int64_t zuluYear = 0;
    int64_t lights = 0;  // mask
};

// The tables. In brackets: the one thread, or the one lock, under which a table is touched.
extern std::vector<LiveAc> liveAcs;                  // [worker] live aircraft in every fs
extern std::vector<StaticAc> staticAcs;              // [worker] static parked aircraft
extern std::vector<std::string> ghostCallsigns;      // [worker] ghosts that met their twin; never spawn again
extern std::vector<uint32_t> spawnStack;             // [worker] hexids whose object is to be created
extern std::deque<CreateRequest> liveCreateQueue;    // [worker] waiting for their turn
extern std::deque<CreateRequest> staticCreateQueue;  // [worker] waiting for their turn
extern std::deque<uint32_t> removeWaitQueue;         // [worker] object ids waiting for their turn
extern std::list<uint32_t> standChangeList;     // [worker] hexids whose stand has just been left or taken
extern std::vector<SimMessage> ackWait;         // [worker] created objects waiting for their set-up
extern std::vector<PositionRecord> fillBuffer;  // [worker] this tick's positions, on their way to the frame
extern std::vector<SimMessage> simMessages;     // [messageMutex] the SimClient appends, the worker takes
extern std::deque<FeedRecord> feedQueue;        // [feedMutex] the reader appends, the cycle takes
extern bool intakeOpen;                         // [feedMutex] the cycle takes records

extern std::atomic<int32_t> tick;       // [atomic] worker counts, reader stamps; never reset
extern std::atomic<bool> secondDue;     // [atomic] SimClient sets, the worker clears
extern std::atomic<float> frameRate;    // [atomic] SimClient, frames per second
extern std::atomic<bool> userOnGround;  // [atomic] SimClient
extern std::atomic<int32_t>
    currentQnh;                      // [atomic] sea level pressure, hPa; kStandardQnh until the feed has told
extern int32_t secondCount;          // [worker] counts secondTicks up to a day
extern bool wasPaused;               // [worker] the last pass found the flight not running
extern bool flareActive;             // [worker] an aircraft is in the flare: object data come faster
extern UserAc userNow;               // [worker] snapshot, once a second
extern std::string blockedCallsign;  // [worker] BLOCK_CALLSIGN, taken over once a second
extern HourStamp hourNow;            // [worker] the half hour of now

// The park airport, as far as the engine needs it; none until one is known.
struct ParkAirportPlace {
    double lat = 0;
    double lon = 0;
    double elevation = 0;  // feet
};
extern std::optional<ParkAirportPlace> parkAirport;  // [worker]

// The words of the states as they stand in the log.
std::string_view stateWord(FsState fs);
std::string_view stateWord(StState st);

// "{:3} {:4}" of airline and model.
std::string aimo(const AcBase& ac);
// Route, call sign and registration: "{} {:8} {}".
std::string gf_flightText(const AcBase& ac);
// The flight text and aimo.
std::string logName(const AcBase& ac);

// The key of an aircraft for which no livery was found.
std::string gf_failedKey(const AcBase& ac);

// Changes the phase and keeps the old one in prevSt; nothing happens if it is the same.
void gf_setSt(LiveAc& ac, StState st);

// The aircraft with this hexid, object id, or call sign (not removingfromsim); nullptr if there is none.
// The pointer is good until the next call that may add or erase an aircraft.
LiveAc* gf_liveByHexid(uint32_t hexid);
LiveAc* gf_liveByObject(uint32_t objectid);
LiveAc* gf_liveByCallsign(std::string_view callsign);

// How many live aircraft are active.
int64_t gf_activeCount();

// Makes room in the tables, once.
void gf_reserveTables();
// Empties them all, and puts the values beside them back, as when a run ends. The tick goes on;
// currentQnh and parkAirport are put back by those who set them. Takes messageMutex and feedMutex one by one.
void gf_clearTables();

}  // namespace vlt
