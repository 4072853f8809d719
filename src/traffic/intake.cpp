#include "traffic/intake.h"

#include "core/base/locks.h"
#include "liveries/database.h"
#include "traffic/geodesy.h"
#include "traffic/identity.h"
#include "traffic/performance.h"
#include "traffic/stream.h"
#include "traffic/stream_end.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vlt {

static constexpr double kSecondsPerHour = 3600.0;

// --- samples that tell nothing new

static bool lf_isJump(double last, double now)
{
    constexpr double kSlow = 5;  // knots
    constexpr double kFactor = 10;
    constexpr double kFast = 80;  // knots
    const auto grows = [](double from, double to) { return from > kSlow && to >= kFactor * from; };
    const double slower = std::min(last, now);
    const double faster = std::max(last, now);
    return grows(last, now) || grows(now, last) || (slower <= kSlow && faster >= kFast);
}

static double lf_trackChange(const PosSample& a, const PosSample& b)
{
    return std::abs(std::remainder(a.track - b.track, 360.0));
}

// Seconds for a distance in nm at a speed in knots.
static double lf_seconds(double distance, double speed)
{
    return distance / (speed / kSecondsPerHour);
}

static bool lf_isThinned(const PosSample& last, const PosSample& now, double dt)
{
    constexpr double kFastAir = 120;  // knots
    constexpr double kAirStep = 450 / kMetresPerNm;
    constexpr double kSlowGround = 30;  // knots
    constexpr double kGroundStep = 20 / kMetresPerNm;
    constexpr double kLongestGround = 15;  // seconds
    if (now.airborne) {
        // The first one of the air tells when to rotate.
        return last.airborne && now.speed > kFastAir && lf_trackChange(last, now) <= 1 &&
               dt <= lf_seconds(kAirStep, now.speed);
    }
    if (now.speed > kSlowGround || lf_trackChange(last, now) > 2) {
        return false;
    }
    const double pause =
        now.speed > 0 ? std::min(kLongestGround, lf_seconds(kGroundStep, now.speed)) : kLongestGround;
    return dt <= pause;
}

static bool lf_isRedundant(const LiveAc& ac, const FeedRecord& record)
{
    constexpr double kShortestStep = 1.0;  // seconds
    if (ac.stream.empty()) {
        return false;
    }
    const double dt = record.timestamp - ac.feedTime;
    const PosSample& last = ac.stream.back();
    // An invented sample tells no speed.
    const bool reported = ac.extendCount < 1;
    return dt <= kShortestStep || (reported && (lf_isJump(last.speed, record.sample.speed) ||
                                                lf_isThinned(last, record.sample, dt)));
}

// An airborne report so near the park airport's level is one on its ground, judged wrong.
static bool lf_atAirportLevel(double altitude)
{
    constexpr double kJudgedBelow = 10000;  // feet
    constexpr double kNear = 120;           // feet
    return parkAirport && altitude > 0 && altitude < kJudgedBelow &&
           std::abs(altitude - parkAirport->elevation) <= kNear;
}

// --- known aircraft

static void lf_offer(LiveAc& ac, const FeedRecord& record)
{
    if (ac.fs == FsState::LiveryRespawn || ac.fs == FsState::RemovingFromSim || lf_isRedundant(ac, record)) {
        return;
    }
    if (ac.fs == FsState::Buffer && lf_atAirportLevel(record.sample.altitude)) {
        return;
    }
    if (!identityUpdate(ac, record)) {
        return;
    }
    ac.feedTime = record.timestamp;
    decodeExisting(ac, record.sample);
}

// --- new aircraft

// The model by which the aircraft is known to the data base; empty if there is none.
static std::string lf_knownModel(const FeedRecord& record)
{
    if (isValidModel(record.model)) {
        return record.model;
    }
    const RegRecord* known = findRegcode(record.regcode);
    return known != nullptr ? known->type : std::string();
}

void newLiveAc(const FeedRecord& record)
{
    const std::string model = lf_knownModel(record);
    if (model.empty() || lf_atAirportLevel(record.sample.altitude)) {
        return;
    }
    if (!gf_categoryAccepted(categoryOf(model))) {
        return;
    }
    LiveAc& ac = liveAcs.emplace_back();
    ac.hexid = record.hexid;
    gf_setModel(ac, model);
    ac.origin = record.origin;
    ac.destination = record.destination;
    ac.callsign = record.callsign;
    ac.coupledCs1 = record.callsign;
    ac.regcode = record.regcode;
    ac.feedTime = record.timestamp;
    ac.stream.push_back(record.sample);
}

static std::optional<FeedRecord> lf_nextRecord()
{
    const std::scoped_lock lock(feedMutex);
    if (feedQueue.empty()) {
        return std::nullopt;
    }
    std::optional<FeedRecord> record = std::move(feedQueue.front());
    feedQueue.pop_front();
    return record;
}

bool feedIntake()
{
    const std::optional<FeedRecord> next = lf_nextRecord();
    if (!next) {
        return false;
    }
    const FeedRecord& record = *next;
    if (LiveAc* ac = gf_liveByHexid(record.hexid)) {
        lf_offer(*ac, record);
        return true;
    }
    const bool known = std::ranges::any_of(liveAcs, [&record](const LiveAc& ac) {
        return !record.callsign.empty() && ac.callsign == record.callsign && ac.model == record.model;
    });
    if (!known) {
        newLiveAc(record);
    }
    return true;
}

}  // namespace vlt
