#include "standin/summary.h"

#include "core/base/text.h"
#include "standin/run_files.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <span>

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
        nm += distNm(gf_placeOf(a), gf_placeOf(b));
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

static Json lf_motionJson(const RunMotion& motion, double hours)
{
    Json list = Json::array();
    for (const MotionBreak& one :
         std::span(motion.breaks).first(std::min(kListedBreaks, motion.breaks.size()))) {
        list.push_back({{"object", one.object},
                        {"callsign", one.callsign},
                        {"time", lf_rounded(one.time, 0.01)},
                        {"kind", one.kind},
                        {"size", lf_rounded(one.size, 0.1)}});
    }
    const auto count = static_cast<double>(motion.breaks.size());
    return {{"aircraftHours", lf_rounded(hours, 0.001)},
            {"breaks", motion.breaks.size()},
            {"breaksPerHour", hours > 0 ? lf_rounded(count / hours, 0.01) : 0},
            {"byKind", motion.byKind},
            {"list", list}};
}

static Json lf_complaintsJson(const std::vector<Complaint>& complaints)
{
    Json list = Json::array();
    for (const Complaint& complaint :
         std::span(complaints).first(std::min(kListedComplaints, complaints.size()))) {
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
    const RunMotion motion = gf_runMotion(lives);
    double hours = 0;
    Json objects = Json::array();
    for (const ObjectLife& life : lives) {
        objects.push_back(
            lf_lifeJson(life, std::ranges::count(motion.breaks, life.id, &MotionBreak::object)));
        hours += gf_controlledHours(life, now);
    }
    const Json summary{{"seconds", lf_rounded(now, 0.01)},
                       {"world", facts.world},
                       {"feed", facts.feed},
                       {"feedLines", facts.feedLines},
                       {"httpRequests", facts.httpRequests},
                       {"positionLines", facts.positionLines},
                       {"lastPosition", facts.lastPosition},
                       {"timeLines", facts.timeLines},
                       {"realTrafficConnections", facts.realTrafficConnections},
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
                       {"motion", lf_motionJson(motion, hours)},
                       {"objects", objects}};
    // Titles come from the client and may hold any bytes.
    return summary.dump(2, ' ', false, Json::error_handler_t::replace);
}

// Every object once a second, angles in degrees, heights in feet.
static std::string lf_tracksTable(const std::vector<ObjectLife>& lives)
{
    fmt::memory_buffer table;
    const auto out = fmt::appender(table);
    fmt::format_to(out, "id,callsign,time,lat,lon,altitude,agl,headingDeg,pitchDeg,bankDeg,tas,onGround,gear,"
                        "flaps,lights\n");
    for (const ObjectLife& life : lives) {
        const std::string callsign = gf_csvCell(life.tailNumber);
        for (const TrackPoint& p : life.track) {
            fmt::format_to(
                out, "{},{},{:.2f},{:.6f},{:.6f},{:.1f},{:.1f},{:.2f},{:.2f},{:.2f},{:.1f},{},{},{},{}\n",
                life.id, callsign, p.time, p.lat, p.lon, p.altitude, p.agl, p.heading * kDegPerRad,
                p.pitch * kDegPerRad, p.bank * kDegPerRad, p.tas, p.onGround ? 1 : 0, p.gearDown ? 1 : 0,
                p.flaps, p.lights);
        }
    }
    return fmt::to_string(table);
}

void gf_writeSummary(const VirtualSimulator& simulator, const RunFacts& facts,
                     const std::filesystem::path& folder)
{
    gf_writeRunFile(folder / "summary.json", gf_summary(simulator, facts) + '\n');
    gf_writeRunFile(folder / "tracks.csv", lf_tracksTable(simulator.lives()));
}

}  // namespace vlt
