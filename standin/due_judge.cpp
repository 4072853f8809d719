#include "standin/due_judge.h"

#include "core/base/text.h"
#include "liveries/database.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vlt {

DueSpread gf_spreadOf(std::vector<DueMeasure> measures)
{
    if (measures.empty()) {
        return {};
    }
    const auto size = [](const DueMeasure& m) { return std::abs(m.value); };
    const auto sizeAt = [&](double share) {
        const auto at =
            measures.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(measures.size() - 1));
        std::ranges::nth_element(measures, at, {}, size);
        return static_cast<double>(size(*at));
    };
    return {sizeAt(0.5), sizeAt(0.95), *std::ranges::max_element(measures, {}, size)};
}

void DueJudge::onReport(const FeedRecord& record)
{
    m_seen[record.hexid].track.add(record.sample, categoryOf(record.model) == AcCategory::Rotorcraft);
}

void DueJudge::onRotation(const LiveAc& ac)
{
    m_findings.rotations.push_back({0, ac.hexid, tick});
}

static std::optional<DueBand> lf_bandOf(const LiveAc& ac)
{
    constexpr double kLow = 3000;  // feet above ground
    if (!ac.onGround) {
        return ac.agl < kLow ? DueBand::Below3000Ft : DueBand::Above3000Ft;
    }
    if (ac.st == StState::Parked || ac.st == StState::PushingBack) {
        return std::nullopt;  // where these stand is our own doing
    }
    if (ac.takeOff) {
        return DueBand::TakeOffRun;
    }
    return ac.landingRoll ? DueBand::LandingRoll : DueBand::Taxi;
}

// What can't be, if it lasts; empty if all is well.
static std::string_view lf_wrong(const LiveAc& ac, const DuePlace& due)
{
    constexpr double kUp = 500;             // feet
    constexpr double kHangs = 1000;         // feet
    constexpr double kOffGround = 50;       // feet
    constexpr double kPerHectopascal = 28;  // feet, by which altitudes that aren't corrected mislead
    const double mislead = std::abs(currentQnh - kStandardQnh) * kPerHectopascal;
    const double ground = ac.alt - ac.agl;
    if (ac.onGround && due.airborne && due.altitude - ground > kUp + mislead) {
        return "is on the ground, its reports fly";
    }
    if (!ac.onGround && due.taxis && ac.agl > kOffGround) {
        return "is in the air, its reports taxi";
    }
    if (!ac.onGround && due.airborne && due.altitude - ac.alt > kHangs + mislead) {
        return "hangs below its reports";
    }
    return {};
}

std::string DueJudge::onSecond(const LiveAc& ac)
{
    constexpr int32_t kSettling = kTicksPerSecond;
    constexpr int32_t kForgiven = 40 * kTicksPerSecond;  // a leg may be that long
    Seen& seen = m_seen[ac.hexid];
    if (seen.drivenSince < 0) {
        seen.drivenSince = tick;
    }
    const auto due = seen.track.placeAt(tick);
    if (!due || tick < seen.drivenSince + kSettling) {
        seen.wrongSince = -1;
        return {};
    }
    if (const auto band = lf_bandOf(ac)) {
        const DueOffset offset = seen.track.offsetFrom(*due, gf_placeOf(ac), ac.alt, tick);
        DueBandFindings& found = m_findings.bands[static_cast<size_t>(*band)];
        found.metres.push_back({static_cast<float>(offset.metres), ac.hexid, tick});
        found.seconds.push_back({static_cast<float>(offset.seconds), ac.hexid, tick});
        if (!ac.onGround) {
            found.feet.push_back({static_cast<float>(offset.feet), ac.hexid, tick});
        }
    }
    const std::string_view what = lf_wrong(ac, *due);
    if (what.empty()) {
        seen.wrongSince = -1;
        return {};
    }
    if (seen.wrongSince < 0) {
        seen.wrongSince = tick;
    }
    return tick - seen.wrongSince == kForgiven ? format("{} {}", ac.callsign, what) : std::string();
}

DueFindings DueJudge::finish()
{
    std::vector<DueMeasure> rotations;
    for (DueMeasure& rotation : m_findings.rotations) {
        if (const auto due = m_seen[rotation.hexid].track.liftOffNear(rotation.tick)) {
            rotation.value = static_cast<float>(rotation.tick - *due) / kTicksPerSecond;
            rotations.push_back(rotation);
        }
    }
    m_findings.rotations = std::move(rotations);
    return std::move(m_findings);
}

}  // namespace vlt
