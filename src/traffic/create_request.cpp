#include "traffic/create_request.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "sim/wire/simconnect.h"
#include "traffic/due_place.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

namespace vlt {

// A call sign as it fits the simulator's tail number.
static std::string lf_tailNumber(std::string_view callsign)
{
    return std::string(callsign.substr(0, kSimTailNumberWidth - 1));
}

void makeCreateRequest(uint32_t hexid)
{
    LiveAc* ac = gf_liveByHexid(hexid);
    if (ac == nullptr) {
        return;
    }
    if (ac->callsign.empty()) {
        logLine(format("operator () {} objectid = 0?", logName(*ac)));
        return;
    }
    constexpr int32_t kBetweenCreations = 50;  // ticks
    constexpr int32_t kSetUp = 200;            // ticks
    const auto waiting = static_cast<int32_t>(liveCreateQueue.size());
    gf_placeWhereDue(*ac, tick + waiting * kBetweenCreations + kSetUp);
    CreateRequest request;
    request.lat = ac->lat;
    request.lon = ac->lon;
    request.altitude = ac->alt;
    request.pitch = ac->pitch * kDegPerRad;
    request.bank = ac->bank * kDegPerRad;
    request.heading = ac->hdg * kDegPerRad;
    request.onGround = !ac->stream.front().airborne;
    request.tailNumber = lf_tailNumber(ac->callsign);
    request.title = ac->title;
    request.hexid = hexid;
    liveCreateQueue.push_back(std::move(request));
}

void gf_requestStatic(const StaticAc& ac)
{
    CreateRequest request;
    request.lat = ac.standLat;
    request.lon = ac.standLon;
    request.heading = ac.standHeading * kDegPerRad;
    request.onGround = true;
    request.tailNumber = lf_tailNumber(ac.callsign);
    request.title = ac.title;
    request.hexid = ac.hexid;
    staticCreateQueue.push_back(std::move(request));
}

// Takes the aircraft's request back while it still waits for its turn.
static bool lf_cancelCreation(std::deque<CreateRequest>& queue, const StaticAc& ac)
{
    const std::string tailNumber = lf_tailNumber(ac.callsign);
    const auto found = std::ranges::find_if(queue, [&](const CreateRequest& request) {
        return request.tailNumber == tailNumber && request.hexid == ac.hexid;
    });
    if (found == queue.end()) {
        return false;
    }
    queue.erase(found);
    return true;
}

static bool lf_cancelSpawn(uint32_t hexid)
{
    return std::erase(spawnStack, hexid) > 0;
}

bool gf_takeRequestBack(const StaticAc& ac)
{
    return lf_cancelSpawn(ac.hexid) || lf_cancelCreation(liveCreateQueue, ac) ||
           lf_cancelCreation(staticCreateQueue, ac);
}

}  // namespace vlt
