#include "standin/replay.h"

#include "airports/learned_save.h"
#include "airports/loading.h"
#include "airports/parking/park_airport.h"
#include "airports/parking/static_parking.h"
#include "core/base/clock.h"
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/run.h"
#include "core/traffic_loop.h"
#include "link/traffic_reader.h"
#include "liveries/liveries.h"
#include "liveries/match_index.h"
#include "sim/client.h"
#include "sim/requests.h"
#include "standin/direct.h"
#include "standin/installed_titles.h"
#include "standin/learned_folder.h"
#include "standin/world.h"
#include "traffic/flight_plan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

namespace vlt {

// --- the world

static LatLon lf_middleOf(const std::vector<ParkPos>& stands)
{
    const auto [south, north] = std::ranges::minmax(stands, {}, &ParkPos::lat);
    const auto [west, east] = std::ranges::minmax(stands, {}, &ParkPos::lon);
    return {(south.lat + north.lat) / 2, (west.lon + east.lon) / 2};
}

// The file becomes the park airport, whatever its publisher and wherever it lies.
static void lf_loadAirport(const ReplayOptions& options)
{
    AirportLoad load = gf_readApfAlone(options.airportFile, options.airportCode);
    if (!load.failed.empty()) {
        throw std::runtime_error(format("{}: {}", options.airportFile.string(), load.failed));
    }
    gf_layLearnedOver(options.airportsFolder, options.airportCode, load);
    const LatLon middle = lf_middleOf(load.apf.stands);
    gf_installParkAirport(std::move(load), middle);
}

static SimulatorOptions lf_simulatorOptions(const ReplayOptions& options)
{
    SimulatorOptions simulator;
    simulator.user = options.user;
    simulator.terrain = options.terrain;
    simulator.zuluStart += std::llround(options.from);  // the weekday and half hour of the feed
    simulator.titles = gf_readTitles(options.world / "titles.csv");
    simulator.keepCalls = true;
    if (options.forgets) {
        simulator.trackPeriod = 0;
    }
    return simulator;
}

// --- the engine as at the start of a run

static void lf_setParameters(const ReplayOptions& options)
{
    AUTO_RANGE.value = false;
    LATERAL_RANGE.value = options.rangeNm;
    gf_applyLateralRange();
    MAX_LIVE.value = -1;
    LOG.value = false;
    SIM_INSTALL_PATH.value = "C:\\Prepar3D v5";
}

static void lf_resetEngine()
{
    closeRequested = false;
    if (!gf_resetRun()) {
        throw std::runtime_error("the replay was asked to end");
    }
    gf_clearMatchIndexes();
    tick = 0;
}

// One replay: engine, simulator and feed in step.
class Replay
{
public:
    Replay(const FeedSource& feed, const ReplayOptions& options, ReplayObserver* observer)
        : m_feed(feed), m_options(options), m_observer(observer), m_simulator(lf_simulatorOptions(options))
    {
        lf_resetEngine();
        gf_seedRandom(options.seed);
        lf_setParameters(options);
        gf_loadWorld(options.world);
        if (!options.airportFile.empty()) {
            lf_loadAirport(options);
        }
        trafficReader.setCentre(gf_placeOf(options.user));
        simTimeMode = true;
        realTrafficHere = true;  // a repeated line counts
        currentQnh = options.qnh;
        if (!options.planFolder.empty()) {
            makeFlightPlanFolder(options.planFolder);
        }
        gf_setDirectSimulator(&m_simulator);
        connect();
    }

    ~Replay()
    {
        gf_closeSim();
        gf_setDirectSimulator(nullptr);
        gf_removeFlightPlanFolder();
        static_cast<void>(gf_resetRun());  // after a close the next replay does it
        simTimeMode = false;
    }

    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;

    ReplayResult run()
    {
        const auto begun = std::chrono::steady_clock::now();
        m_result.clockAtStart = m_simulator.now();
        constexpr int32_t kPlanAfter = 16 * kTicksPerSecond;  // as after an airport came in sight
        gf_preparePlanning();
        const auto ticks = static_cast<int32_t>(std::lround(m_options.seconds * kTicksPerSecond));
        for (int32_t n = 0; n < ticks; ++n) {
            if (n % kTicksPerSecond == 0) {
                fetchLines(n / kTicksPerSecond);
            }
            hearUntil(m_options.from + static_cast<double>(n) / kTicksPerSecond);
            if (n == kPlanAfter && parkState == ParkState::Loaded) {
                initialPlanning();
            }
            step();
            if (tick % kTicksPerSecond == 0) {
                second();
            }
        }
        m_result.wallSeconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
        m_result.simulatedSeconds = m_options.seconds;
        if (!m_options.airportsFolder.empty()) {
            saveLearned(gf_learnedIn(m_options.airportsFolder, m_options.airportCode));
        }
        return finish();
    }

private:
    static constexpr double kTickSeconds = 0.01;

    void connect()
    {
        if (!gf_openSim() || !gf_requestUserOnGround() || !gf_requestUserTitleAndModel()) {
            throw std::runtime_error("the simulator in process can't be reached");
        }
        requestUserPosition();
        for (int i = 0; i < 2 * kTicksPerSecond && !simRunning; ++i) {
            m_simulator.advance(kTickSeconds);
            gf_dispatchSim();
        }
        const std::scoped_lock lock(feedMutex);
        intakeOpen = true;
    }

    void step()
    {
        m_simulator.advance(kTickSeconds);
        gf_dispatchSim();
        if (!trafficPass()) {
            throw std::runtime_error("the run ended by itself");
        }
        m_judge.onTick();
        if (m_observer != nullptr) {
            m_observer->onTick(tick);
        }
    }

    void second()
    {
        m_judge.onSecond(m_simulator);
        m_result.aircraftSeconds += static_cast<double>(m_judge.active());
        if (m_options.forgets && tick % (60 * kTicksPerMinute) == 0) {
            m_judge.forget();
            m_simulator.forgetRemoved();
        }
        if (m_observer != nullptr) {
            m_observer->onSecond(tick, m_simulator);
        } else {
            m_simulator.takeCalls();
        }
    }

    // A stretch of the feed at a time: a day has many lines.
    void fetchLines(int32_t second)
    {
        constexpr int32_t kStretch = 60;
        if (second % kStretch != 0) {
            return;
        }
        const double from = m_options.from + second;
        m_lines = m_feed.lines(from, from + kStretch);
        m_next = 0;
    }

    void hearUntil(double time)
    {
        for (; m_next < m_lines.size() && m_lines[m_next].time <= time; ++m_next) {
            hear(m_options.pressureAltitudes ? gf_withPressureAltitude(m_lines[m_next].text, m_options.qnh)
                                             : m_lines[m_next].text);
        }
    }

    void hear(const std::string& line)
    {
        if (line.empty() || line.size() >= kDatagramLimit) {
            ++m_result.feedLines["no datagram"];
            return;
        }
        trafficReader.take(line);
        ++m_result.feedLines[std::string(gf_outcomeText(trafficReader.outcome))];
        if (trafficReader.outcome == LineOutcome::Taken) {
            const std::scoped_lock lock(feedMutex);
            if (!feedQueue.empty()) {
                m_judge.onReport(feedQueue.back());
            }
        }
    }

    ReplayResult finish()
    {
        m_result.findings = m_judge.finish();
        m_result.lives = m_simulator.lives();
        m_result.complaints = m_simulator.complaints();
        m_result.counts = m_simulator.counts();
        return std::move(m_result);
    }

    const FeedSource& m_feed;
    const ReplayOptions& m_options;
    ReplayObserver* m_observer;
    VirtualSimulator m_simulator;
    ReplayJudge m_judge;
    ReplayResult m_result;
    std::vector<DayLine> m_lines;
    size_t m_next = 0;
};

ReplayResult gf_replay(const FeedSource& feed, const ReplayOptions& options, ReplayObserver* observer)
{
    return Replay(feed, options, observer).run();
}

std::string gf_withPressureAltitude(const std::string& line, int32_t qnh)
{
    constexpr double kFeetPerHectopascal = 27.3;  // near sea level in the standard atmosphere
    constexpr size_t kAltitudeField = 4;
    size_t begin = 0;
    for (size_t field = 0; field < kAltitudeField; ++field) {
        begin = line.find(',', begin);
        if (begin == std::string::npos) {
            return line;
        }
        ++begin;
    }
    const size_t end = line.find(',', begin);
    const double altitude = std::strtod(line.c_str() + begin, nullptr);
    if (end == std::string::npos || altitude == 0) {
        return line;
    }
    const double shown = altitude + (kStandardQnh - qnh) * kFeetPerHectopascal;
    return line.substr(0, begin) + format("{:.0f}", shown) + line.substr(end);
}

}  // namespace vlt
