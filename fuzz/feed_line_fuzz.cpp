// Any bytes as a datagram of the feed. Whatever is taken must be finite and in bounds.
#include "core/base/parameters.h"
#include "link/traffic_reader.h"
#include "traffic/traffic.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

using namespace vlt;

static bool lf_isSound(const PosSample& s)
{
    for (const double value : {s.lat, s.lon, s.roll, s.heading, s.altitude, s.speed, s.track, s.vs, s.tas}) {
        if (!std::isfinite(value) || std::abs(value) > 1e8) {
            return false;
        }
    }
    return std::abs(s.lat) <= 90 && std::abs(s.lon) <= 180;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    intakeOpen = true;
    trafficReader.setParkAirport(ParkAirportPlace{47, 8, 1400});
    LATERAL_RANGE.value = 100;
    lateralRangeNm = 100000;
    trafficReader.collectCallsigns = size % 2 == 0;
    trafficReader.take({reinterpret_cast<const char*>(data), size});
    for (const FeedRecord& record : feedQueue) {
        if (!lf_isSound(record.sample) || record.hexid <= kLastStaticHexid ||
            !std::isfinite(record.timestamp)) {
            std::abort();
        }
    }
    feedQueue.clear();
    return 0;
}
