#include "standin/replay_files.h"

#include "core/base/text.h"
#include "standin/run_files.h"
#include "standin/sim_checks.h"
#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <span>
#include <vector>

namespace vlt {

using Json = nlohmann::ordered_json;

// --- while it runs

ReplayRecorder::ReplayRecorder(const std::filesystem::path& folder, int32_t everyTicks, bool events)
    : m_tracks(gf_openRunFile(folder / "tracks.csv")), m_everyTicks(std::max(everyTicks, 1))
{
    m_tracks << "tick,hexid,object,callsign,fs,st,lat,lon,alt,hdg,pitch,bank,speed,on_ground,agl\n";
    if (events) {
        m_events = gf_openRunFile(folder / "events.csv");
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
                       ac.hexid, ac.objectid, gf_csvCell(ac.callsign), stateWord(ac.fs), stateWord(ac.st),
                       ac.lat, ac.lon, ac.alt, ac.hdg * kDegPerRad, ac.pitch * kDegPerRad,
                       ac.bank * kDegPerRad, ac.tasOut, ac.onGround ? 1 : 0, ac.agl);
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
                               call.value, gf_csvCell(call.text), gf_csvCell(call.tailNumber),
                               lf_values(call));
        }
    }
}

// --- afterwards

static std::string lf_livesTable(const std::vector<ReplayLife>& lives)
{
    std::string table =
        "hexid,callsign,airline,model,registration,title,title_step,known,active,gone,last_fs,last_st,"
        "stands,stand_distance_m,touchdown,touchdown_lat,touchdown_lon,sink_fpm,first_ground_report_m,why\n";
    for (const ReplayLife& life : lives) {
        table +=
            format("{},{},{},{},{},{},{},{},{},{},{},{},{},{:.2f},", life.hexid, gf_csvCell(life.callsign),
                   gf_csvCell(life.airline), gf_csvCell(life.model), gf_csvCell(life.regcode),
                   gf_csvCell(life.title), life.titleStep, life.firstTick, life.activeTick, life.goneTick,
                   stateWord(life.fs), stateWord(life.st), gf_csvCell(life.stands), life.standDistanceM);
        if (life.touchdown) {
            const Touchdown& t = *life.touchdown;
            table += format("{},{:.6f},{:.6f},{:.0f},{:.1f},", t.tick, t.at.lat, t.at.lon, t.sinkFpm,
                            life.firstGroundReportM);
        } else {
            table += ",,,,,";
        }
        table += gf_csvCell(life.why) + '\n';
    }
    return table;
}

// A static aircraft in the same columns: its state is parked from its first tick on.
static std::string lf_staticTable(const std::vector<StaticLife>& lives)
{
    std::string table;
    for (const StaticLife& life : lives) {
        table += format("{},{},{},{},{},{},{},{},{},{},{},static,{},0.00,,,,,,{}\n", life.hexid,
                        gf_csvCell(life.callsign), gf_csvCell(life.airline), gf_csvCell(life.model),
                        gf_csvCell(life.regcode), gf_csvCell(life.title), life.titleStep, life.firstTick,
                        life.activeTick, life.goneTick, stateWord(life.fs), gf_csvCell(life.stand),
                        gf_csvCell(life.why));
    }
    return table;
}

static Json lf_staticParking(const StaticFindings& statics)
{
    Json halfHours = Json::array();
    for (const ParkedCount& c : statics.halfHours) {
        halfHours.push_back({{"day", c.stamp.day},
                             {"slot", c.stamp.slot},
                             {"static", c.statics},
                             {"liveParked", c.live},
                             {"wanted", c.wanted}});
    }
    return {{"aircraft", statics.lives.size()}, {"updates", statics.updates}, {"halfHours", halfHours}};
}

static Json lf_breaks(const ReplayResult& result)
{
    constexpr size_t kListed = 60;
    RunMotion motion = gf_runMotion(result.lives);
    const double hours = result.aircraftSeconds / 3600;
    Json table = Json::object();
    for (const auto& [kind, count] : motion.byKind) {
        table[kind] = {{"count", count},
                       {"perAircraftHour", hours > 0 ? static_cast<double>(count) / hours : 0}};
    }
    std::ranges::stable_sort(motion.breaks, std::greater<>(), &MotionBreak::size);
    Json worst = Json::array();
    for (const MotionBreak& b : std::span(motion.breaks).first(std::min(kListed, motion.breaks.size()))) {
        worst.push_back({{"kind", b.kind},
                         {"tick", std::llround((b.time - result.clockAtStart) * kTicksPerSecond)},
                         {"callsign", b.callsign},
                         {"size", b.size}});
    }
    return {{"kinds", table}, {"worst", worst}};
}

// Median, 95 % and worst of one kind of offset; the worst with its aircraft and tick.
static Json lf_spread(const std::vector<DueMeasure>& measures)
{
    if (measures.empty()) {
        return {{"count", 0}};
    }
    const auto rounded = [](double value) { return std::round(value * 100) / 100; };
    const DueSpread spread = gf_spreadOf(measures);
    const Json worst = {
        {"value", rounded(spread.worst.value)}, {"hexid", spread.worst.hexid}, {"tick", spread.worst.tick}};
    return {{"count", measures.size()},
            {"median", rounded(spread.median)},
            {"95", rounded(spread.most)},
            {"worst", worst}};
}

static Json lf_due(const DueFindings& due)
{
    Json table = Json::object();
    for (size_t i = 0; i < due.bands.size(); ++i) {
        const DueBandFindings& band = due.bands[i];
        Json row = {{"metres", lf_spread(band.metres)}, {"seconds", lf_spread(band.seconds)}};
        if (!band.feet.empty()) {
            row["feet"] = lf_spread(band.feet);
        }
        table[std::string(kDueBandNames[i])] = row;
    }
    table["rotations"] = lf_spread(due.rotations);
    return table;
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

// The report as JSON text: counts, invariants, motion breaks by kind and per aircraft-hour, touchdowns.
static std::string lf_replayReport(const ReplayResult& result)
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
                         {"staticParking", lf_staticParking(result.findings.statics)},
                         {"objects",
                          {{"created", result.counts.created},
                           {"removed", result.counts.removed},
                           {"refused", result.counts.refused}}},
                         {"wrongPackets", result.counts.complaints},
                         {"invariantBreaks", result.findings.invariantBreakCount},
                         {"invariantBreakList", invariants},
                         {"lowestWheelsFt", lowest},
                         {"motionBreaks", lf_breaks(result)},
                         {"offDuePlace", lf_due(result.findings.due)}};
    return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void gf_writeReplay(const ReplayResult& result, const std::filesystem::path& folder)
{
    gf_writeRunFile(folder / "aircraft.csv",
                    lf_livesTable(result.findings.lives) + lf_staticTable(result.findings.statics.lives));
    gf_writeRunFile(folder / "report.json", lf_replayReport(result));
}

}  // namespace vlt
