#include "traffic/legs.h"

#include "airports/learning.h"
#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/air_motion.h"
#include "traffic/ground_motion.h"
#include "traffic/leg_time.h"
#include "traffic/removal.h"
#include "traffic/stream_end.h"
#include "traffic/way.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vlt {

static void lf_beginLeg(LiveAc& ac)
{
    const int32_t due = ac.stream[1].time;
    if (ac.frontDue == 0) {
        ac.frontDue = ac.stream[0].time;
    }
    legTime(ac);
    if (ac.stream[1].stationary) {
        ac.velocity = {};
        ac.frontDue = due;
        return;
    }
    const int32_t ticks = gf_legTicks(ac);
    ac.backwards = gf_goesBackwards(ac);
    if (!gf_isLaid(ac.way)) {
        gf_layWay(ac, ticks);
    }
    if (ac.onGround) {
        groundSettings(ac, ticks);
    } else {
        airSettings(ac, ticks);
    }
    ac.way.perTick = 1.0 / gf_legTicks(ac);
    if (!ac.stream[1].turned) {
        ac.frontDue = due;
    }
}

void nextPos(LiveAc& ac)
{
    ac.way = Way{};
    const PosSample& front = ac.stream[0];
    PosSample& next = ac.stream[1];
    if (!next.stationary && gf_samePosition(front, next)) {
        next.stationary = true;
    }
    if (!next.stationary) {
        ac.trackTarget = bearing(gf_placeOf(front), gf_placeOf(next));
    }
    if (ac.onGround) {
        nextPosGround(ac);
    }
    if (ac.stream.size() < 2) {
        removeAircraftFromSim(ac, "no leg left");
        throw std::runtime_error(format("nextPos {} fs:{}, st:{} stream at the end is empty?", logName(ac),
                                        stateWord(ac.fs), stateWord(ac.st)));
    }
    lf_beginLeg(ac);
    ac.stream.pop_front();
}

// An aircraft in the air doesn't stand still.
static bool lf_standsInAir(const LiveAc& ac)
{
    return !ac.onGround && ac.stream[1].stationary && ac.category != AcCategory::Rotorcraft;
}

static void lf_nextPosMain(LiveAc& ac)
{
    while (true) {
        if (ac.stream.size() >= 2) {
            if (!lf_standsInAir(ac)) {
                nextPos(ac);
                return;
            }
            ac.stream.erase(ac.stream.begin() + 1);
        } else if (!extendStream(ac)) {
            if (ac.st != StState::Parked) {
                offerSoftLearning(ac, ac.st != StState::Flying);
            }
            removeAircraftFromSim(ac, "reports ended");
            return;
        }
    }
}

void nextPosMain(LiveAc& ac)
{
    try {
        lf_nextPosMain(ac);
    } catch (const std::exception& e) {
        logLine(format("nextPosMain: {} {}, sz:{}, fs:{}, st:{}", e.what(), logName(ac), ac.stream.size(),
                       stateWord(ac.fs), stateWord(ac.st)));
        throw;
    }
}

}  // namespace vlt
