#include "traffic/stand_moves.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/object_commands.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vlt {

static int32_t lf_ticksAtStandSpeed(const LiveAc& ac, LatLon from, LatLon to)
{
    return static_cast<int32_t>(std::lround(distNm(from, to) * kTicksPerHour / ac.standSpeed));
}

// A sample of ours at stand speed.
static PosSample lf_waypoint(const LiveAc& ac, LatLon place, int32_t time)
{
    PosSample sample;
    sample.lat = place.lat;
    sample.lon = place.lon;
    sample.speed = ac.standSpeed;
    sample.time = time;
    return sample;
}

static void lf_dropReports(LiveAc& ac)
{
    ac.stream.resize(1);
    ac.stream.front().speed = ac.standSpeed;
    ac.extendCount = 0;
    ac.trackTarget = ac.hdg;
}

// --- out

void pullOut(LiveAc& ac)
{
    const LatLon stand = gf_standPlace(ac);
    const LatLon ahead = destination(stand, ac.standHeading, 2 * ac.radius * kFeetPerNm);
    ac.pullOutPending = false;
    lf_dropReports(ac);
    ac.stream.push_back(lf_waypoint(ac, ahead, tick + lf_ticksAtStandSpeed(ac, stand, ahead)));
    gf_setSt(ac, StState::Taxi);
    gf_commandLights(ac, kLightsPushBack);
    gf_commandEngines(ac, true);
    gf_commandThrottle(ac, kThrottleIdle);
    gf_commandFlaps(ac, 1);
    logLine(format("{:8}: {:8} pulling out", gf_standName(ac), ac.callsign));
}

void pushBack(LiveAc& ac)
{
    constexpr double kStraightRadii = 2.5;  // of the stand
    constexpr double kRightAngle = std::numbers::pi / 2;
    ac.extendCount = 0;
    const ParkPos* stand = gf_stand(ac.standId);
    if (stand == nullptr) {
        return;
    }
    const LatLon from = gf_placeOf(ac);
    const double tail = gf_normalAngle(ac.standHeading + std::numbers::pi);
    const LatLon back = destination(from, tail, stand->radius * kStraightRadii * kFeetPerNm);
    const int32_t ticksBack = lf_ticksAtStandSpeed(ac, from, back);
    lf_dropReports(ac);
    ac.stream.push_back(lf_waypoint(ac, back, tick + ticksBack));
    insertMidpoint(ac);
    const LatLon mid = gf_placeOf(ac.stream[1]);
    const auto exitTo = [&](double direction) {
        const LatLon side = destination(back, direction, ac.radius * kFeetPerNm);
        return lf_waypoint(ac, side, tick + ticksBack / 2 + lf_ticksAtStandSpeed(ac, mid, side));
    };
    ac.pushExitSample = exitTo(tail + kRightAngle);
    ac.stream.push_back(exitTo(tail - kRightAngle));
    ac.pushTurnKnown = false;
    gf_commandLights(ac, kLightsPushBack);
    gf_setSt(ac, StState::PushingBack);
    ac.pushStage = kPushStraight;
}

// --- in

void drive2Stand(LiveAc& ac, const ParkPos& stand)
{
    constexpr int32_t kShortestDrive = 100;  // ticks
    constexpr int32_t kStop = 50;            // ticks
    if (ac.stream.empty()) {
        logLine("drive2Stand empty sz?");
        return;
    }
    PosSample& last = ac.stream.back();
    const LatLon centre = gf_placeOf(stand);
    const int32_t ticks = std::max(lf_ticksAtStandSpeed(ac, gf_placeOf(last), centre), kShortestDrive);
    last.speed = ac.standSpeed;
    PosSample arrival = lf_waypoint(ac, centre, ac.stream.front().time + ticks);
    arrival.roll = ac.bank;
    arrival.rollValid = true;
    arrival.altitude = ac.alt;
    arrival.tas = ac.standSpeed;
    arrival.track = stand.heading * kDegPerRad;
    arrival.stationary = gf_samePosition(last, arrival);
    PosSample stop = arrival;
    stop.speed = 0;
    stop.tas = 0;
    stop.stationary = true;
    stop.time += kStop;
    ac.stream.push_back(arrival);
    ac.stream.push_back(stop);
    ac.trackTarget = stand.heading;
    if (ac.extendCount >= 1) {
        ac.extendCount = 0;
    }
}

}  // namespace vlt
