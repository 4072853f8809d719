#include "standin/due_track.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vlt {

static constexpr int32_t kLongestGap = 30 * kTicksPerSecond;
static constexpr double kTaxiSpeed = 35;    // knots
static constexpr double kFastestTaxi = 43;  // knots
static constexpr double kClimbs = 256;      // feet per minute; slow aircraft are told to be on the ground

static LatLon lf_between(LatLon a, LatLon b, double share)
{
    return {std::lerp(a.lat, b.lat, share),
            std::remainder(a.lon + std::remainder(b.lon - a.lon, 360.0) * share, 360.0)};
}

void DueTrack::add(const PosSample& sample, bool needsNoRun)
{
    const bool runs = needsNoRun || sample.speed >= kFastestTaxi;
    if (m_reports.empty() || sample.time > m_reports.back().due) {
        m_reports.push_back({sample.time, gf_placeOf(sample), sample.altitude, sample.speed, sample.airborne,
                             sample.airborne || (runs && sample.vs > kClimbs)});
    }
}

// The first report due after `when`; 0 or the count of reports outside of them.
size_t DueTrack::reportAfter(double when) const
{
    const auto after = std::ranges::upper_bound(m_reports, when, {}, &Report::due);
    return static_cast<size_t>(after - m_reports.begin());
}

std::optional<DuePlace> DueTrack::placeAt(double when) const
{
    const size_t next = reportAfter(when);
    if (next == 0 || next == m_reports.size() ||
        m_reports[next].due - m_reports[next - 1].due > kLongestGap) {
        return std::nullopt;
    }
    const Report& a = m_reports[next - 1];
    const Report& b = m_reports[next];
    const double share = (when - a.due) / (b.due - a.due);
    return DuePlace{lf_between(a.at, b.at, share), std::lerp(a.altitude, b.altitude, share),
                    std::lerp(a.knots, b.knots, share), a.airborne && b.airborne,
                    !a.airborne && !b.airborne && std::max(a.knots, b.knots) < kTaxiSpeed};
}

// By the place of the way, within a minute, that the object is nearest to; of several the one nearest in
// time.
double DueTrack::ticksLate(LatLon object, int32_t now) const
{
    constexpr int32_t kWindow = 60 * kTicksPerSecond;
    constexpr double kMetresPerDegree = 60 * kMetresPerNm;
    constexpr double kMetresPerTick = 0.005;  // by which a nearer time outweighs a nearer place
    const double perLon = kMetresPerDegree * std::cos(object.lat * kRadPerDeg);
    const auto plane = [&](const Report& r) {
        return std::pair((r.at.lat - object.lat) * kMetresPerDegree,
                         std::remainder(r.at.lon - object.lon, 360.0) * perLon);
    };
    double best = std::numeric_limits<double>::infinity();
    double late = 0;
    for (size_t i = std::max<size_t>(reportAfter(now - kWindow), 1);
         i < m_reports.size() && m_reports[i - 1].due < now + kWindow; ++i) {
        const auto [an, ae] = plane(m_reports[i - 1]);
        const auto [bn, be] = plane(m_reports[i]);
        const double length2 = (bn - an) * (bn - an) + (be - ae) * (be - ae);
        const double span = m_reports[i].due - m_reports[i - 1].due;
        // One that stands is there all the time between.
        const double share =
            length2 > 1 ? -((bn - an) * an + (be - ae) * ae) / length2 : (now - m_reports[i - 1].due) / span;
        const double at = std::clamp(share, 0.0, 1.0);
        const double off = now - (m_reports[i - 1].due + at * span);
        const double cost =
            std::hypot(std::lerp(an, bn, at), std::lerp(ae, be, at)) + kMetresPerTick * std::abs(off);
        if (cost < best) {
            best = cost;
            late = off;
        }
    }
    return late;
}

DueOffset DueTrack::offsetFrom(const DuePlace& due, LatLon object, double altitude, int32_t now) const
{
    constexpr double kStands = 3;  // knots
    const double seconds = due.knots < kStands ? 0 : ticksLate(object, now) / kTicksPerSecond;
    return {distNm(object, due.at) * kMetresPerNm, altitude - due.altitude, seconds};
}

std::optional<int32_t> DueTrack::liftOffNear(int32_t now) const
{
    constexpr int32_t kFarthest = 60 * kTicksPerSecond;
    std::optional<int32_t> found;
    bool inGap = false;
    for (size_t i = 1; i < m_reports.size(); ++i) {
        const bool liftsOff = m_reports[i].lifts && !m_reports[i - 1].lifts;
        if (liftsOff && (!found || std::abs(m_reports[i].due - now) < std::abs(*found - now))) {
            found = m_reports[i].due;
            inGap = m_reports[i].due - m_reports[i - 1].due > kLongestGap;
        }
    }
    const bool told = found && !inGap && std::abs(*found - now) <= kFarthest;
    return told ? found : std::nullopt;
}

}  // namespace vlt
