#include "support/aircraft.h"

#include "traffic/geodesy.h"
#include "traffic/performance.h"

#include <cmath>
#include <numbers>

namespace vlt {

PosSample gf_airSample(int32_t time)
{
    PosSample sample;
    sample.lat = 47;
    sample.lon = 8;
    sample.altitude = 10000;
    sample.speed = 300;
    sample.track = 90;
    sample.tas = 320;
    sample.time = time;
    sample.airborne = true;
    return sample;
}

PosSample gf_eastOf(const PosSample& sample, double nm)
{
    PosSample moved = sample;
    moved.lon += nm / 60 / std::cos(sample.lat * kRadPerDeg);
    return moved;
}

LiveAc& gf_addBuffered(uint32_t hexid, const char* callsign)
{
    LiveAc& ac = liveAcs.emplace_back();
    ac.hexid = hexid;
    ac.callsign = callsign;
    ac.airline = "BAW";
    ac.model = "A319";
    ac.category = AcCategory::Large;
    gf_applyPerformance(ac);
    const PosSample front = gf_airSample(tick);
    PosSample second = gf_eastOf(front, 300.0 * 10 / 3600);
    second.time = front.time + 1000;
    ac.stream = {front, second};
    return ac;
}

LiveAc& gf_addFlying(uint32_t hexid, const char* callsign)
{
    LiveAc& ac = gf_addBuffered(hexid, callsign);
    ac.fs = FsState::Active;
    ac.st = StState::Flying;
    ac.objectid = 100 + static_cast<uint32_t>(liveAcs.size());
    ac.lat = ac.stream[0].lat;
    ac.lon = ac.stream[0].lon;
    ac.alt = ac.stream[0].altitude;
    ac.hdg = std::numbers::pi / 2;
    return ac;
}

}  // namespace vlt
