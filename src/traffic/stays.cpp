#include "traffic/stays.h"

#include "airports/stand_search.h"
#include "core/base/parameters.h"
#include "core/base/talkative_log.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <map>
#include <utility>

namespace vlt {

int32_t maxPark = 0;

// Since when aircraft rest on the reserved stand: ticks, by hexid.
static std::map<uint32_t, int32_t> restsSince;  // [worker]

static LiveAc* lf_longestParked()
{
    LiveAc* longest = nullptr;
    for (LiveAc& ac : liveAcs) {
        if (gf_isParked(ac) && (longest == nullptr || ac.parkedSince < longest->parkedSince)) {
            longest = &ac;
        }
    }
    return longest;
}

int32_t gf_halfHoursSince(HourStamp stamp, HourStamp now)
{
    constexpr uint32_t kSlotsPerWeek = 7 * kSlotsPerDay;
    const auto place = [](HourStamp s) { return s.day * static_cast<uint32_t>(kSlotsPerDay) + s.slot; };
    const uint32_t since = (place(now) + kSlotsPerWeek - place(stamp) % kSlotsPerWeek) % kSlotsPerWeek;
    return static_cast<int32_t>(since) - static_cast<int32_t>(since > kSlotsPerWeek / 2 ? kSlotsPerWeek : 0);
}

static void lf_removeOldestStatic(int64_t parked)
{
    const auto present = std::ranges::count_if(staticAcs, [](const StaticAc& s) {
        return s.fs == FsState::Active || s.fs == FsState::RemovingFromSim;
    });
    if (present + parked <= maxPark || staticAcs.empty()) {
        return;
    }
    const auto oldest = std::ranges::max_element(
        staticAcs, {}, [](const StaticAc& s) { return gf_halfHoursSince(s.stamp, hourNow); });
    if (oldest->fs == FsState::Active) {
        removeAircraftFromSim(*oldest, "a live aircraft parks in its place");
    }
}

void maxParkCheck(int32_t extra)
{
    const auto parked = std::ranges::count_if(liveAcs, gf_isParked) + extra;
    if (!INITIAL_LOAD_ONLY.value && maxPark >= 1 && parked > maxPark) {
        if (LiveAc* longest = lf_longestParked()) {
            logTalkative(
                format("{:}: {:8} max park exceeded, removed", gf_standName(*longest), longest->callsign));
            removeAircraftFromSim(*longest, "more parked than wanted");
        }
    }
    lf_removeOldestStatic(parked);
}

std::vector<ParkedStay> oldParkedRound()
{
    std::vector<ParkedStay> stays;
    for (LiveAc& ac : liveAcs) {
        if (!gf_isParked(ac)) {
            continue;
        }
        const int32_t longest = (ac.category == AcCategory::Heavy ? 180 : 90) * kTicksPerMinute;
        const int32_t stay = ac.liveAtStand ? 0 : tick - ac.parkedSince;
        if (stay > longest && !INITIAL_LOAD_ONLY.value) {
            removeAircraftFromSim(ac, "parked for long enough");
        } else {
            stays.push_back({ac.standId, stay / kTicksPerMinute, gf_flightText(ac), ac.callsign, ac.hexid});
        }
    }
    std::ranges::stable_sort(stays, {}, &ParkedStay::minutes);
    return stays;
}

void removeOldestParked(int32_t count)
{
    for (; count > 0; --count) {
        LiveAc* longest = lf_longestParked();
        if (longest == nullptr) {
            return;
        }
        logTalkative(format("live parked {} at {} removed", longest->callsign, gf_standName(*longest)));
        removeAircraftFromSim(*longest, "fewer parked aircraft are wanted");
    }
}

void gf_flushParked()
{
    for (StaticAc& ac : staticAcs) {
        removeAircraftFromSim(ac, "the airport is out of sight");
    }
    for (LiveAc& ac : liveAcs) {
        if (ac.st == StState::Parked) {
            removeAircraftFromSim(ac, "the airport is out of sight");
        }
        gf_forgetStand(ac);
    }
}

// Who has come to rest on the stand without taking it, since it is the user's, goes after a minute.
static void lf_removeResting(const ParkPos& reserved)
{
    std::map<uint32_t, int32_t> resting;
    for (LiveAc& ac : liveAcs) {
        if (ac.fs != FsState::Active || ac.st != StState::Taxi || ac.stream.empty() ||
            !ac.stream.front().stationary || distNm(gf_placeOf(ac), gf_placeOf(reserved)) > reserved.radius) {
            continue;
        }
        const auto before = restsSince.find(ac.hexid);
        const int32_t since = before == restsSince.end() ? tick.load() : before->second;
        resting[ac.hexid] = since;
        if (tick - since >= kTicksPerMinute) {
            removeAircraftFromSim(ac, "the reserved stand stays free");
        }
    }
    restsSince = std::move(resting);
}

void clearReservedStand()
{
    const ParkPos* stand = gf_standById(reservedStand);
    if (reservedStand.empty() || stand == nullptr) {
        restsSince.clear();
        return;
    }
    StaticAc* holder = gf_staticHolder(stand->index);
    if (holder == nullptr) {
        holder = gf_liveHolder(stand->index, kParked);
    }
    if (holder != nullptr) {
        removeAircraftFromSim(*holder, "the reserved stand stays free");
    }
    lf_removeResting(*stand);
}

}  // namespace vlt
