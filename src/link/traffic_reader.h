// The Traffic Reader: decodes the aircraft reports of the feed, one comma-separated line each, and hands
// those that can concern the user to the engine.
//
// Runs on its own thread. It takes feedMutex for the push of one record, and for a call sign while these
// are collected. What other threads set for it are shared values: a late one costs one line's judgement.
#pragma once

#include "core/base/shared_value.h"
#include "link/udp_reader.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <atomic>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vlt {

inline constexpr uint16_t kTrafficPort = 49005;

// What became of a line.
enum class LineOutcome {
    Taken,         // its record stands in feedQueue
    NotOpen,       // valid, but the cycle takes no records now
    Vehicle,       // a ground vehicle
    Malformed,     // a field is missing or unreadable
    NoPosition,    // out of bounds, or the null position
    OutOfRange,    // too far from the user
    LongTail,      // a registration of more than 12 characters
    NoType,        // no type designator
    NoAircraft,    // by category or type no aircraft
    LowHexid,      // below the first live one
    Blacklisted,   // a call sign that no aircraft has
    Nameless,      // neither call sign nor registration
    GroundNoPark,  // on the ground, with no park airport
    GroundFar,     // on the ground, not at the park airport
};

// The outcome in a few words, for people.
std::string_view gf_outcomeText(LineOutcome outcome);

class TrafficReader : public UdpReader
{
public:
    TrafficReader();
    void processDatagram() override;
    void onStarted() override;
    void onStopped() override;
    void forget() override;

    // Sets the centre of the range test.
    void setCentre(LatLon position);
    // Sets the park airport by which ground reports are judged; none clears it.
    void setParkAirport(const std::optional<ParkAirportPlace>& place);

    SharedValue<double> centreLat = 0.0;  // of the range test, degrees
    SharedValue<double> centreLon = 0.0;
    SharedValue<double> parkElevation =
        std::numeric_limits<double>::quiet_NaN();  // feet; NaN without park airport, as one atomic value
    SharedValue<double> parkLat = 0.0;
    SharedValue<double> parkLon = 0.0;
    std::atomic<bool> collectCallsigns{false};          // [atomic] worker
    std::set<std::string, std::less<>> callsignsHeard;  // [feedMutex]
    std::vector<std::string_view> fields;               // [reader] views into the datagram at hand
    LineOutcome outcome = LineOutcome::Malformed;       // [reader] of the last datagram
    FeedRecord record;                                  // [reader] of the last datagram, as far as decoded

private:
    std::optional<double> knownElevation() const;
    LineOutcome processLine();
    LineOutcome decodeLine();
    LineOutcome decodeNear(LatLon position);
    LineOutcome takeIdentity();
    LineOutcome takeCallsign();
    LineOutcome judgeGround() const;
    LineOutcome push();
    void takeMotion();
    void noteCallsign(std::string_view callsign);
    void cutFields(size_t enough);
    std::string_view field(size_t place);

    std::string_view m_uncut;  // the rest of the datagram behind `fields`
    bool m_allCut = false;
};

extern TrafficReader trafficReader;

// Starts the Traffic Reader's thread.
std::jthread startTrafficReader(uint16_t port);

// Air or ground: the altitude in feet that counts for a report, 0 on the ground. `parkElevation` in feet.
double gf_groundedAltitude(double altitude, double speed, std::optional<double> parkElevation);

// A guess at the true airspeed, in knots, of an aircraft that doesn't tell, from its altitude in feet.
double gf_estimatedTas(double altitude);

}  // namespace vlt
