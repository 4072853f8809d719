#include "standin/replay_files.h"

#include "core/base/text.h"
#include "standin/motion_breaks.h"
#include "standin/sim_checks.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <vector>

namespace vlt {

using Json = nlohmann::ordered_json;

static std::ofstream lf_open(const std::filesystem::path& path)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
    return file;
}

// A text of the feed in a cell.
static std::string lf_cell(std::string_view text)
{
    std::string cell(text);
    const bool quoted = cell.find_first_of(",\"\r\n") != std::string::npos;
    if (!quoted) {
        return cell;
    }
    for (size_t at = cell.find('"'); at != std::string::npos; at = cell.find('"', at + 2)) {
        cell.insert(at, 1, '"');
    }
    return '"' + cell + '"';
}

// --- while it runs

ReplayRecorder::ReplayRecorder(const std::filesystem::path& folder, int32_t everyTicks, bool events)
    : m_tracks(lf_open(folder / "tracks.csv")), m_everyTicks(std::max(everyTicks, 1))
{
    m_tracks << "tick,hexid,object,callsign,fs,st,lat,lon,alt,hdg,pitch,bank,speed,on_ground,agl\n";
    if (events) {
        m_events = lf_open(folder / "events.csv");
        m_events << "time,call,object,id,value,text,tail_number,values\n";
    }
}

void ReplayRecorder::onTick(int32_t now)
{
    if (now % m_everyTicks != 0) {
        return;
    }
    for (const LiveAc& ac : liveAcs) {
        if (ac.fs != FsState::Active) {
            continue;
        }
        fmt::format_to(fmt::appender(m_rows),
                       "{},{},{},{},{},{},{:.7f},{:.7f},{:.2f},{:.2f},{:.2f},{:.2f},{:.1f},{},{:.2f}\n", now,
                       ac.hexid, ac.objectid, lf_cell(ac.callsign), stateWord(ac.fs), stateWord(ac.st),
                       ac.lat, ac.lon, ac.alt, ac.hdg * kDegPerRad, ac.pitch * kDegPerRad,
                       ac.bank * kDegPerRad, ac.speedOut, ac.onGround ? 1 : 0, ac.agl);
    }
}

static bool lf_isPosition(const SimCall& call)
{
    constexpr size_t kPositionValues = 8;
    return call.function == SimFunction::SetDataOnSimObject && call.values.size() == kPositionValues;
}

static std::string lf_values(const SimCall& call)
{
    std::string text;
    for (const double value : call.values) {
        text += (text.empty() ? "" : " ") + format("{:.7g}", value);
    }
    return text;
}

void ReplayRecorder::onSecond(int32_t, VirtualSimulator& simulator)
{
    m_tracks.write(m_rows.data(), static_cast<std::streamsize>(m_rows.size()));
    m_rows.clear();
    const std::vector<SimCall> calls = simulator.takeCalls();
    if (!m_events.is_open()) {
        return;
    }
    for (const SimCall& call : calls) {
        if (!lf_isPosition(call)) {
            m_events << format("{:.2f},{},{},{},{},{},{},{}\n", call.time,
                               gf_functionName(static_cast<uint32_t>(call.function)), call.object, call.id,
                               call.value, lf_cell(call.text), lf_cell(call.tailNumber), lf_values(call));
        }
    }
}

// --- afterwards

static void lf_writeLives(const std::vector<ReplayLife>& lives, const std::filesystem::path& path)
{
    std::ofstream file = lf_open(path);
    file << "hexid,callsign,airline,model,registration,title,title_step,known,active,gone,last_fs,last_st,"
            "stands,"
            "stand_distance_m,touchdown,touchdown_lat,touchdown_lon,sink_fpm,first_ground_report_m,why\n";
    for (const ReplayLife& life : lives) {
        file << format("{},{},{},{},{},{},{},{},{},{},{},{},{},{:.2f},", life.hexid, lf_cell(life.callsign),
                       lf_cell(life.airline), lf_cell(life.model), lf_cell(life.regcode), lf_cell(life.title),
                       life.titleStep, life.firstTick, life.activeTick, life.goneTick, stateWord(life.fs),
                       stateWord(life.st), lf_cell(life.stands), life.standDistanceM);
        if (life.touchdown) {
            const Touchdown& t = *life.touchdown;
            file << format("{},{:.6f},{:.6f},{:.0f},{:.1f},", t.tick, t.at.lat, t.at.lon, t.sinkFpm,
                           life.firstGroundReportM);
        } else {
            file << ",,,,,";
        }
        file << lf_cell(life.why) << '\n';
    }
}

static Json lf_breaks(const ReplayResult& result)
{
    constexpr size_t kListed = 60;
    std::map<std::string, int64_t> kinds;
    std::vector<MotionBreak> all;
    for (const ObjectLife& life : result.lives) {
        for (MotionBreak& found : gf_motionBreaks(life)) {
            ++kinds[found.kind];
            all.push_back(std::move(found));
        }
    }
    const double hours = result.aircraftSeconds / 3600;
    Json table = Json::object();
    for (const auto& [kind, count] : kinds) {
        table[kind] = {{"count", count},
                       {"perAircraftHour", hours > 0 ? static_cast<double>(count) / hours : 0}};
    }
    std::ranges::stable_sort(all, std::greater<>(), &MotionBreak::size);
    Json worst = Json::array();
    for (size_t i = 0; i < std::min(all.size(), kListed); ++i) {
        const MotionBreak& b = all[i];
        worst.push_back({{"kind", b.kind},
                         {"tick", std::llround((b.time - result.clockAtStart) * kTicksPerSecond)},
                         {"callsign", b.callsign},
                         {"size", b.size}});
    }
    return {{"kinds", table}, {"worst", worst}};
}

static Json lf_lives(const std::vector<ReplayLife>& lives)
{
    int64_t driven = 0, landed = 0, parked = 0;
    std::map<std::string, int64_t> reasons;
    for (const ReplayLife& life : lives) {
        driven += life.activeTick >= 0 ? 1 : 0;
        landed += life.touchdown ? 1 : 0;
        parked += life.stands.empty() ? 0 : 1;
        if (life.goneTick >= 0) {
            ++reasons[life.why.empty() ? "never spawned" : life.why];
        }
    }
    return {{"known", lives.size()},
            {"driven", driven},
            {"touchdowns", landed},
            {"parked", parked},
            {"gone", reasons}};
}

std::string gf_replayReport(const ReplayResult& result)
{
    Json invariants = Json::array();
    for (const InvariantBreak& b : result.findings.invariantBreaks) {
        invariants.push_back({{"tick", b.tick}, {"what", b.what}});
    }
    double lowest = 0;
    for (const ObjectLife& life : result.lives) {
        for (const TrackPoint& point : life.track) {
            lowest = life.firstPositionAt != kNeverInLife && point.time > life.firstPositionAt + 1
                         ? std::min(lowest, point.agl)
                         : lowest;
        }
    }
    const Json report = {{"simulatedSeconds", result.simulatedSeconds},
                         {"aircraftHours", result.aircraftSeconds / 3600},
                         {"feedLines", result.feedLines},
                         {"aircraft", lf_lives(result.findings.lives)},
                         {"objects",
                          {{"created", result.counts.created},
                           {"removed", result.counts.removed},
                           {"refused", result.counts.refused}}},
                         {"wrongPackets", result.counts.complaints},
                         {"invariantBreaks", result.findings.invariantBreakCount},
                         {"invariantBreakList", invariants},
                         {"lowestWheelsFt", lowest},
                         {"motionBreaks", lf_breaks(result)}};
    return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void gf_writeReplay(const ReplayResult& result, const std::filesystem::path& folder)
{
    lf_writeLives(result.findings.lives, folder / "aircraft.csv");
    lf_open(folder / "report.json") << gf_replayReport(result);
}

}  // namespace vlt
