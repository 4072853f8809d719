#include "traffic/removal.h"

#include "airports/airports.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/talkative_log.h"
#include "core/base/text.h"
#include "liveries/matching.h"
#include "traffic/create_request.h"
#include "traffic/flight_plan.h"
#include "traffic/geodesy.h"
#include "traffic/leg_time.h"
#include "traffic/stand_holding.h"

#include <algorithm>

namespace vlt {

static void lf_removeWhileAdding(StaticAc& ac)
{
    if (gf_takeRequestBack(ac)) {
        ac.eraseCancelled = true;
        gf_releaseStand(ac);  // no object will ever stand there
    } else {
        ac.removeWhenAdded = true;
    }
}

// `words` of the log for one without an object, with the place for its name.
static void lf_queueRemoval(const StaticAc& ac, const char* words)
{
    if (ac.objectid != kNoObject) {
        removeWaitQueue.push_back(ac.objectid);
    } else {
        logLine(format(fmt::runtime(words), logName(ac)));
    }
}

void removeAircraftFromSim(StaticAc& ac, std::string_view why)
{
    if (ac.goesBecause.empty()) {
        ac.goesBecause = why;
    }
    if (ac.fs == FsState::Buffer) {
        ac.eraseNow = true;
        gf_releaseStand(ac);  // one that should come back with another livery still has its claim
        return;
    }
    if (ac.removeWhenAdded || ac.eraseCancelled || ac.fs == FsState::RemovingFromSim) {
        return;
    }
    if (ac.fs == FsState::Adding2Sim) {
        lf_removeWhileAdding(ac);
        return;
    }
    gf_releaseStand(ac);
    const bool objectGoesAnyway = ac.fs == FsState::LiveryRespawn;
    ac.fs = FsState::RemovingFromSim;
    if (!objectGoesAnyway) {
        lf_queueRemoval(ac, "removeAircraftFromSim removing act {}, with objectid=0 ?");
    }
}

void gf_turnAway(LiveAc& ac, std::string_view why)
{
    logTalkative(format("          {} turned away: {}", logName(ac), why));
    removeAircraftFromSim(ac, why);
}

void liveryRespawn(LiveAc& ac)
{
    if (ac.stream.empty()) {
        removeAircraftFromSim(ac, "no report left");
        return;
    }
    if (ac.st == StState::Parked) {
        ac.stream.resize(1);
        ac.stream.front().stationary = true;
        ac.stream.front().track = ac.hdg * kDegPerRad;
    }
    PosSample q = ac.stream.front();
    if (ac.st != StState::Parked) {
        q.lat = ac.lat;
        q.lon = ac.lon;
        q.roll = ac.bank;
        q.rollValid = true;
        q.altitude = ac.alt;
        PosSample& front = ac.stream.front();
        front.stationary = gf_samePosition(front, q);
    }
    q.time = tick + 1;
    ac.stream.front().time = std::max(ac.stream.front().time, q.time + 1);
    ac.stream.push_front(q);
    ac.fs = FsState::LiveryRespawn;
    lf_queueRemoval(ac, "liveryRespawn removing act {} with objectid=0 ?");
}

static void lf_backToBuffer(LiveAc& ac)
{
    ac.fs = FsState::Buffer;
    ac.throttleLevel = kNoThrottleLevel;
    ac.flapsLevel = kNoFlapsLevel;
    ac.objectid = kNoObject;
}

void onObjectRemoved(uint32_t objectid)
{
    if (objectid == kNoObject) {
        return;
    }
    if (LiveAc* ac = gf_liveByObject(objectid)) {
        if (ac->fs == FsState::LiveryRespawn) {
            lf_backToBuffer(*ac);
            return;
        }
        removeFlightPlan(objectid);
        gf_releaseStand(*ac);  // the simulator may have removed it by itself
        std::swap(*ac, liveAcs.back());
        liveAcs.pop_back();
        return;
    }
    std::erase_if(staticAcs, [objectid](const StaticAc& ac) { return ac.objectid == objectid; });
}

template <typename Ac>
static void lf_refused(std::vector<Ac>& table, uint32_t hexid)
{
    const auto found = std::ranges::find(table, hexid, &Ac::hexid);
    if (found == table.end()) {
        return;
    }
    const Ac refused = *found;
    gf_releaseStand(refused);
    std::swap(*found, table.back());
    table.pop_back();
    if (!gf_stopping()) {
        gf_noteRefusedTitle(refused);
    }
}

void gf_onCreateRefused(uint32_t hexid)
{
    if (hexid > kLastStaticHexid) {
        lf_refused(liveAcs, hexid);
    } else {
        lf_refused(staticAcs, hexid);
    }
}

double gf_distanceToUser(const PosSample& sample)
{
    return distNm(gf_placeOf(userNow), gf_placeOf(sample));
}

static LiveAc* lf_furtherAway(double distance)
{
    constexpr double kWorthIt = 0.1;  // nm
    LiveAc* furthest = nullptr;
    for (LiveAc& ac : liveAcs) {
        const double d = distNm(gf_placeOf(userNow), gf_placeOf(ac));
        if (ac.fs == FsState::Active && d > distance + kWorthIt) {
            distance = d;
            furthest = &ac;
        }
    }
    return furthest;
}

bool gf_canMakeRoom(double distance)
{
    return lf_furtherAway(distance) != nullptr;
}

bool makeRoom(double distance)
{
    LiveAc* furthest = lf_furtherAway(distance);
    if (furthest == nullptr) {
        return false;
    }
    removeAircraftFromSim(*furthest, "makes room for a nearer one");
    return true;
}

void gf_keepWithinMaxLive()
{
    if (MAX_LIVE.value < 0) {
        return;
    }
    for (auto surplus = gf_activeCount() - MAX_LIVE.value; surplus > 0 && makeRoom(-1); --surplus) {
    }
}

void gf_eraseMarked()
{
    std::erase_if(liveAcs, gf_isMarked);
    std::erase_if(staticAcs, gf_isMarked);
}

}  // namespace vlt
