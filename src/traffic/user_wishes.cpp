#include "traffic/user_wishes.h"

#include "core/base/parameters.h"
#include "liveries/liveries.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"
#include "traffic/auto_range.h"
#include "traffic/removal.h"
#include "traffic/traffic.h"

namespace vlt {

std::atomic<bool> navLightsChanged{false};
std::atomic<bool> rangeChanged{false};
std::atomic<bool> maxLiveChanged{false};
std::atomic<bool> clearNoMatchList{false};

static void lf_switchNavLights()
{
    const uint32_t on = NAV_LIGHTS_WHILE_PARKED.value ? 1 : 0;
    for (const StaticAc& ac : staticAcs) {
        if (ac.fs == FsState::Active) {
            queueEvent(ac.objectid, NAV_LIGHTS_SET, on);
        }
    }
    for (const LiveAc& ac : liveAcs) {
        if (ac.fs == FsState::Active && ac.st == StState::Parked) {
            queueEvent(ac.objectid, NAV_LIGHTS_SET, on);
        }
    }
}

void gf_serviceWishes()
{
    if (navLightsChanged.exchange(false)) {
        lf_switchNavLights();
    }
    if (rangeChanged.exchange(false)) {
        gf_adaptRange();
    }
    if (maxLiveChanged.exchange(false)) {
        gf_keepWithinMaxLive();
    }
}

void gf_serviceNoMatchList()
{
    if (clearNoMatchList.exchange(false)) {
        failedLiveries.clear();
    }
}

void gf_forgetWishes()
{
    for (std::atomic<bool>* wish : {&navLightsChanged, &rangeChanged, &maxLiveChanged, &clearNoMatchList}) {
        *wish = false;
    }
}

}  // namespace vlt
