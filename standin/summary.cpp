#include "standin/summary.h"

#include "core/base/text.h"
#include "standin/motion_breaks.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

namespace vlt {

using Json = nlohmann::ordered_json;

constexpr size_t kListedComplaints = 200;
constexpr size_t kListedBreaks = 200;

static double lf_rounded(double value, double unit)
{
    return std::round(value / unit) * unit;
}

// A time of a life; null for what didn't happen.
static Json lf_time(double time)
{
    return time == kNeverInLife ? Json() : Json(lf_rounded(time, 0.01));
}

static Json lf_trackJson(const std::vector<TrackPoint>& track)
{
    double nm = 0;
    double lowest = track.front().agl;
    double highest = track.front().altitude;
    Json touchdown, takeOff;
    for (size_t i = 1; i < track.size(); ++i) {
        const TrackPoint& a = track[i - 1];
        const TrackPoint& b = track[i];
        nm += distNm({a.lat, a.lon}, {b.lat, b.lon});
        lowest = std::min(lowest, b.agl);
        highest = std::max(highest, b.altitude);
        if (!a.onGround && b.onGround && touchdown.is_null()) {
            touchdown = lf_rounded(b.time, 0.01);
        }
        if (a.onGround && !b.onGround && takeOff.is_null()) {
            takeOff = lf_rounded(b.time, 0.01);
        }
    }
    const auto place = [](const TrackPoint& point) {
        return Json{{"lat", lf_rounded(point.lat, 1e-6)},
                    {"lon", lf_rounded(point.lon, 1e-6)},
                    {"altitude", std::round(point.altitude)},
                    {"agl", lf_rounded(point.agl, 0.1)},
                    {"onGround", point.onGround},
                    {"tas", std::round(point.tas)}};
    };
    return {{"seconds", track.size()},
            {"nm", lf_rounded(nm, 0.01)},
            {"lowestAgl", lf_rounded(lowest, 0.1)},
            {"highest", std::round(highest)},
            {"touchdown", touchdown},
            {"takeOff", takeOff},
            {"first", place(track.front())},
            {"last", place(track.back())}};
}

static Json lf_lifeJson(const ObjectLife& life, size_t breaks)
{
    Json json{{"id", life.id},
              {"callsign", life.tailNumber},
              {"title", life.title},
              {"model", life.model},
              {"category", life.category},
              {"byProgram", life.byClient},
              {"created", lf_time(life.createdAt)},
              {"released", lf_time(life.releasedAt)},
              {"frozen", lf_time(life.frozenAt)},
              {"firstPosition", lf_time(life.firstPositionAt)},
              {"lastPosition", lf_time(life.lastPositionAt)},
              {"removed", lf_time(life.removedAt)},
              {"positions", life.positions},
              {"events", life.events},
              {"worstStepFeet", lf_rounded(life.worstStepFeet, 0.1)},
              {"worstStepAt", lf_time(life.worstStepAt)},
              {"motionBreaks", breaks}};
    if (!life.track.empty()) {
        json["track"] = lf_trackJson(life.track);
    }
    return json;
}

// The largest number of objects at one moment.
static int lf_mostAlive(const std::vector<ObjectLife>& lives)
{
    std::map<double, int> changes;
    for (const ObjectLife& life : lives) {
        ++changes[life.createdAt];
        if (life.removedAt != kNeverInLife) {
            --changes[life.removedAt];
        }
    }
    int alive = 0;
    int most = 0;
    for (const auto& [time, change] : changes) {
        alive += change;
        most = std::max(most, alive);
    }
    return most;
}

static Json lf_motionJson(const std::vector<MotionBreak>& breaks, double hours)
{
    std::map<std::string, size_t> byKind;
    Json list = Json::array();
    for (const MotionBreak& one : breaks) {
        ++byKind[one.kind];
        if (list.size() < kListedBreaks) {
            list.push_back({{"object", one.object},
                            {"callsign", one.callsign},
                            {"time", lf_rounded(one.time, 0.01)},
                            {"kind", one.kind},
                            {"size", lf_rounded(one.size, 0.1)}});
        }
    }
    return {{"aircraftHours", lf_rounded(hours, 0.001)},
            {"breaks", breaks.size()},
            {"breaksPerHour", hours > 0 ? lf_rounded(static_cast<double>(breaks.size()) / hours, 0.01) : 0},
            {"byKind", byKind},
            {"list", list}};
}

static Json lf_complaintsJson(const std::vector<Complaint>& complaints)
{
    Json list = Json::array();
    for (const Complaint& complaint : complaints) {
        if (list.size() == kListedComplaints) {
            break;
        }
        list.push_back({{"time", lf_rounded(complaint.time, 0.01)},
                        {"sendId", complaint.sendId},
                        {"function", complaint.function},
                        {"reason", complaint.reason}});
    }
    return list;
}

std::string gf_summary(const VirtualSimulator& simulator, const RunFacts& facts)
{
    const SimulatorCounts counts = simulator.counts();
    const std::vector<ObjectLife> lives = simulator.lives();
    const double now = simulator.now();
    Json packets = Json::object();
    for (const auto& [function, count] : counts.packets) {
        packets[gf_functionName(function)] = count;
    }
    std::vector<MotionBreak> breaks;
    double hours = 0;
    Json objects = Json::array();
    for (const ObjectLife& life : lives) {
        const std::vector<MotionBreak> own = gf_motionBreaks(life);
        objects.push_back(lf_lifeJson(life, own.size()));
        breaks.insert(breaks.end(), own.begin(), own.end());
        hours += gf_controlledHours(life, now);
    }
    const Json summary{{"seconds", lf_rounded(now, 0.01)},
                       {"world", facts.world},
                       {"feed", facts.feed},
                       {"feedLines", facts.feedLines},
                       {"httpRequests", facts.httpRequests},
                       {"positionLines", facts.positionLines},
                       {"lastPosition", facts.lastPosition},
                       {"connections", counts.connections},
                       {"packets", packets},
                       {"messages", counts.messages},
                       {"created", counts.created},
                       {"refused", counts.refused},
                       {"removed", counts.removed},
                       {"alive", simulator.objects().size()},
                       {"mostAlive", lf_mostAlive(lives)},
                       {"complaints", counts.complaints},
                       {"complaintList", lf_complaintsJson(simulator.complaints())},
                       {"motion", lf_motionJson(breaks, hours)},
                       {"objects", objects}};
    // Titles come from the client and may hold any bytes.
    return summary.dump(2, ' ', false, Json::error_handler_t::replace);
}

static bool lf_writeTracks(const std::vector<ObjectLife>& lives, const std::filesystem::path& file)
{
    std::ofstream out(file);
    out << "id,callsign,time,lat,lon,altitude,agl,headingDeg,pitchDeg,bankDeg,tas,onGround,gear,flaps,"
           "lights\n";
    for (const ObjectLife& life : lives) {
        for (const TrackPoint& p : life.track) {
            out << format(
                "{},{},{:.2f},{:.6f},{:.6f},{:.1f},{:.1f},{:.2f},{:.2f},{:.2f},{:.1f},{},{},{},{}\n", life.id,
                life.tailNumber, p.time, p.lat, p.lon, p.altitude, p.agl, p.heading * kDegPerRad,
                p.pitch * kDegPerRad, p.bank * kDegPerRad, p.tas, p.onGround ? 1 : 0, p.gearDown ? 1 : 0,
                p.flaps, p.lights);
        }
    }
    return out.good();
}

bool gf_writeSummary(const VirtualSimulator& simulator, const RunFacts& facts,
                     const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::ofstream out(folder / "summary.json");
    out << gf_summary(simulator, facts) << '\n';
    return out.good() && lf_writeTracks(simulator.lives(), folder / "tracks.csv");
}

}  // namespace vlt
