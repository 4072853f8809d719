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

static LatLon lf_placeAt(double metresEast, double metresNorth)
{
    const double nmPerDegree = 60;
    return {47 + metresNorth / kMetresPerNm / nmPerDegree,
            8 + metresEast / kMetresPerNm / nmPerDegree / std::cos(47 * kRadPerDeg)};
}

PosSample gf_groundSample(double metresEast, double metresNorth, double speed, int32_t time)
{
    PosSample sample;
    sample.lat = lf_placeAt(metresEast, metresNorth).lat;
    sample.lon = lf_placeAt(metresEast, metresNorth).lon;
    sample.speed = speed;
    sample.track = 90;
    sample.time = time;
    return sample;
}

LiveAc& gf_addOnGround(uint32_t hexid, const char* callsign, StState st)
{
    LiveAc& ac = gf_addFlying(hexid, callsign);
    ac.st = st;
    ac.prevSt = StState::Flying;
    ac.onGround = true;
    ac.radius = 17.05 / kMetresPerNm;
    PosSample sample = gf_groundSample(0, 0, 0, tick);
    sample.stationary = true;
    ac.stream = {sample};
    ac.lat = 47;
    ac.lon = 8;
    ac.alt = 0;
    return ac;
}

ParkPos& gf_addStand(const char* id, double metresEast, double metresNorth, double headingDeg)
{
    if (!parkAirport) {
        parkApf.code = "XTST";
        parkAirport = ParkAirportPlace{47, 8, 1000};
    }
    ParkPos stand;
    stand.id = id;
    stand.lat = lf_placeAt(metresEast, metresNorth).lat;
    stand.lon = lf_placeAt(metresEast, metresNorth).lon;
    stand.heading = headingDeg * kRadPerDeg;
    stand.radius = 20 / kMetresPerNm;
    parkApf.stands.push_back(stand);
    parkApf.stands.back().index = static_cast<uint32_t>(parkApf.stands.size());
    return parkApf.stands.back();
}

}  // namespace vlt
