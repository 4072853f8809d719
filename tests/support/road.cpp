#include "support/road.h"

#include "core/base/text.h"
#include "standin/day_airport.h"
#include "support/feed_line.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>

namespace vlt {

static constexpr double kStart = 1717665600;  // seconds since 1970

RoadStage::RoadStage()
{
    options.world = std::string(VELATRA_SOURCE_DIR) + "/data/world";
    const LatLon user = gf_positionAround(0, 5000);
    options.user.lat = user.lat;
    options.user.lon = user.lon;
    options.user.onGround = true;
    options.terrain.elevation = kDayElevation;
    options.terrain.originLat = user.lat;
}

// --- reports

static std::string lf_report(const RoadAircraft& aircraft, const PathState& state, double time)
{
    constexpr double kOnGroundBelow = 1;  // feet
    const bool airborne = state.feet >= kOnGroundBelow;
    const LatLon at = gf_positionAround(state.east, state.north);
    FeedLine line;
    line.hexid = aircraft.hexid;
    line.lat = at.lat;
    line.lon = at.lon;
    line.altitude = airborne ? std::round(state.feet + kDayElevation) : 0;
    line.vs = airborne ? std::round(state.climb) : 0;
    line.track = (airborne ? state.track : state.heading) * kDegPerRad;
    line.speed = state.knots;
    line.callsign = aircraft.callsign;
    line.type = aircraft.type;
    line.tail = aircraft.regcode;
    line.origin = aircraft.origin;
    line.destination = aircraft.destination;
    line.timestamp = kStart + time;
    line.other[6] = airborne ? "0" : "1";
    return gf_feedText(line);
}

void RoadStage::add(const RoadAircraft& aircraft, const std::vector<PathState>& journey, double period,
                    double begin, double until)
{
    for (double at = 0; at <= std::min(journey.back().time, until); at += period) {
        add({begin + at, lf_report(aircraft, gf_stateAt(journey, at), begin + at)});
    }
}

void RoadStage::add(RoadReport report)
{
    m_reports.push_back(std::move(report));
}

void RoadStage::editLines(const std::function<void(std::string&)>& edit)
{
    for (RoadReport& report : m_reports) {
        edit(report.text);
    }
}

void RoadStage::clear()
{
    m_reports.clear();
    looks.clear();
}

RoutePoint gf_at(double east, double north, double knots, double feet, double radius)
{
    return {east, north, radius, knots, feet};
}

// --- the airport

static ArchivedStand lf_stand(const char* id, double east, double north, double headingDeg, const char* kind)
{
    const LatLon at = gf_positionAround(east, north);
    return {id, at.lat, at.lon, headingDeg, 20, kind, {}};
}

void RoadStage::useGates()
{
    ArchivedAirport airport;
    airport.code = "XVEL";
    airport.name = "Gates";
    airport.elevation = static_cast<int>(kDayElevation);
    airport.stands = {lf_stand("G1", 0, 0, 0, "gate"), lf_stand("G2", 60, 0, 0, "gate"),
                      lf_stand("G3", 120, 0, 0, "gate"), lf_stand("R1", 400, 0, 180, "ramp"),
                      lf_stand("H1", -300, 0, 90, "heli")};
    usePlace(gf_archivedText(airport));
}

void RoadStage::usePlace(const std::string& airportFileText)
{
    options.airportFile = m_folder.write("place.xml", airportFileText);
}

// --- the replay

// Keeps what is seen of one address.
class RoadWatch : public ReplayObserver
{
public:
    explicit RoadWatch(RoadStage& stage) : m_stage(stage) {}

    void onTick(int32_t now) override
    {
        constexpr int32_t kEvery = 10;
        const LiveAc* ac = gf_liveByHexid(m_stage.watched);
        if (ac == nullptr || now % kEvery != 0) {
            return;
        }
        const double east =
            std::remainder(ac->lon - kDayAirport.lon, 360.0) * 60 * std::cos(kDayAirport.lat * kRadPerDeg);
        m_stage.looks.push_back({now, ac->objectid, ac->fs, ac->st, ac->lat, ac->lon, east * kMetresPerNm,
                                 (ac->lat - kDayAirport.lat) * 60 * kMetresPerNm,
                                 ac->alt - ac->staticCg - kDayElevation, ac->hdg * kDegPerRad, ac->speedOut,
                                 ac->onGround, ac->towed, ac->landingRoll});
        if (m_stage.onLook) {
            m_stage.onLook(m_stage.looks.back());
        }
    }
    void onSecond(int32_t now, VirtualSimulator& simulator) override
    {
        simulator.takeCalls();
        if (m_stage.onSecond) {
            m_stage.onSecond(now, simulator);
        }
    }

private:
    RoadStage& m_stage;
};

ReplayResult RoadStage::play(double seconds)
{
    std::ranges::stable_sort(m_reports, {}, &RoadReport::time);
    std::string text;
    for (const RoadReport& report : m_reports) {
        text += report.text + "\n";
    }
    options.seconds = seconds;
    looks.clear();
    RoadWatch watch(*this);
    const FeedSource feed(m_folder.write("road.txt", text));
    return gf_replay(feed, options, &watch);
}

std::string gf_roadLine(uint32_t hexid, const std::string& callsign, double lat, double lon, double time)
{
    FeedLine line;
    line.hexid = hexid;
    line.callsign = callsign;
    line.lat = lat;
    line.lon = std::remainder(lon, 360.0);
    line.altitude = 20000;
    line.speed = 280;
    line.tail = "";
    line.timestamp = kStart + time;
    return gf_feedText(line);
}

std::string gf_phases(const std::vector<RoadLook>& looks)
{
    std::string phases;
    std::optional<StState> last;
    for (const RoadLook& look : looks) {
        if (look.fs == FsState::Active && look.st != last) {
            phases += (phases.empty() ? "" : " ") + std::string(stateWord(look.st));
            last = look.st;
        }
    }
    return phases;
}

}  // namespace vlt
