#include "traffic/due_place.h"

#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vlt {

double gf_headingBetween(const PosSample& front, const PosSample& next)
{
    constexpr double kCreeps = 6;  // knots
    const bool creeps = !front.airborne && std::max(front.speed, next.speed) <= kCreeps;
    if (creeps && front.headingValid) {
        return gf_normalAngle(front.heading);
    }
    const bool stands = next.stationary || gf_placeOf(front) == gf_placeOf(next);
    return stands ? gf_normalAngle(front.track * kRadPerDeg) : bearing(gf_placeOf(front), gf_placeOf(next));
}

// A place of the stream.
struct Due {
    size_t report = 0;  // the one before it
    PosSample sample;
};

static PosSample lf_between(const PosSample& a, const PosSample& b, int32_t when)
{
    PosSample sample = a;
    const double share = std::clamp(static_cast<double>(when - a.time) / (b.time - a.time), 0.0, 1.0);
    sample.lat = std::lerp(a.lat, b.lat, share);
    sample.lon = std::remainder(a.lon + std::remainder(b.lon - a.lon, 360.0) * share, 360.0);
    sample.altitude = std::lerp(a.altitude, b.altitude, share);
    sample.speed = std::lerp(a.speed, b.speed, share);
    sample.time = when;
    return sample;
}

static std::optional<Due> lf_dueAt(const LiveAc& ac, int32_t when)
{
    const auto& stream = ac.stream;
    const auto leads = [&stream](size_t i) {
        return i + 1 < stream.size() && stream[i + 1].airborne == stream[i].airborne &&
               stream[i + 1].time > stream[i].time;
    };
    if ((ac.st != StState::Taxi && ac.st != StState::Flying) || stream.empty() || stream[0].time >= when) {
        return std::nullopt;
    }
    size_t i = 0;
    while (leads(i) && leads(i + 1) && stream[i + 1].time <= when) {
        ++i;
    }
    return leads(i) ? std::optional(Due{i, lf_between(stream[i], stream[i + 1], when)}) : std::nullopt;
}

static void lf_moveTo(LiveAc& ac, const Due& due)
{
    const PosSample& next = ac.stream[due.report + 1];
    ac.lat = due.sample.lat;
    ac.lon = due.sample.lon;
    if (due.sample.airborne) {
        ac.alt = due.sample.altitude;
    }
    if (!next.stationary) {
        ac.hdg = gf_headingBetween(ac.stream[due.report], next);
    }
}

void gf_placeWhereDue(LiveAc& ac, int32_t when)
{
    if (const auto due = lf_dueAt(ac, when)) {
        lf_moveTo(ac, *due);
    }
}

void gf_beginWhereDue(LiveAc& ac)
{
    if (const auto due = lf_dueAt(ac, tick)) {
        lf_moveTo(ac, *due);
        ac.stream.erase(ac.stream.begin(), ac.stream.begin() + static_cast<std::ptrdiff_t>(due->report));
        ac.stream.front() = due->sample;
    }
    ac.velocity = {};
}

}  // namespace vlt
