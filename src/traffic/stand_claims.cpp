#include "traffic/stand_claims.h"

#include "core/base/talkative_log.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/identity.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <string>

namespace vlt {

// The holder keeps the stand against the newcomer, or goes for the reason that is given.
struct Verdict {
    bool holderStays = false;
    const char* words = "";  // of the log, with the place for the newcomer's call sign
};

static Verdict lf_judgeHolder(const LiveAc& holder, const std::string& callsign)
{
    const bool holderGhost = gf_isGhost(holder.callsign);
    const bool ghost = gf_isGhost(callsign);
    if (callsign == holder.callsign) {
        return {false, "ac with same callsign {} wants it, remove existing ... "};
    }
    if (gf_withoutMark(callsign) == holder.callsign) {
        return {true, ""};  // the holder's own ghost
    }
    if (callsign == gf_withoutMark(holder.callsign) || (holderGhost && !ghost)) {
        return {false, "ghost, replace by {}"};
    }
    if ((ghost && !holderGhost) || holder.liveAtStand) {
        return {true, ""};
    }
    return {false, "removed because another live {} wants the stand ..."};
}

static LiveAc* lf_holderBefore(const LiveAc& newcomer, uint32_t standId)
{
    return gf_liveHolder(standId, kParked | kPushes | kPushed, &newcomer);
}

bool standConflict(const LiveAc& newcomer, uint32_t standId)
{
    const LiveAc* holder = lf_holderBefore(newcomer, standId);
    return holder == nullptr || !lf_judgeHolder(*holder, newcomer.callsign).holderStays;
}

void gf_removeHolder(const LiveAc& newcomer, uint32_t standId)
{
    if (LiveAc* holder = lf_holderBefore(newcomer, standId)) {
        const Verdict verdict = lf_judgeHolder(*holder, newcomer.callsign);
        logTalkative(format("{:8}: {:8} {}", gf_standName(*holder), holder->callsign,
                            format(fmt::runtime(verdict.words), newcomer.callsign)));
        removeAircraftFromSim(*holder, "another aircraft wants its stand");
    }
}

bool gf_adjacentBlocked(const LiveAc& newcomer, const ParkPos& stand)
{
    return std::ranges::any_of(stand.neighbours, [&](uint32_t index) {
        const ParkPos* neighbour = gf_stand(index);
        return std::ranges::any_of(liveAcs, [&](const LiveAc& other) {
            return gf_holds(other, index, kParked | kPushes) && other.callsign != newcomer.callsign &&
                   (neighbour == nullptr || gf_isNullPosition(gf_placeOf(*neighbour)) ||
                    gf_wouldTouch(newcomer.radius, stand, other.radius, *neighbour));
        });
    });
}

}  // namespace vlt
