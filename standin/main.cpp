// velatra-standin: the world outside for demos and tests.
//
// The main thread waits for signals and for the clock; the servers and the player have threads of
// their own.
#include "core/base/text.h"
#include "platform/standard_input.h"
#include "standin/faults.h"
#include "standin/feed_player.h"
#include "standin/file_server.h"
#include "standin/picture.h"
#include "standin/realtraffic_client.h"
#include "standin/run_files.h"
#include "standin/sim_server.h"
#include "standin/standin_options.h"
#include "standin/summary.h"
#include "standin/virtual_simulator.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

using namespace vlt;

constexpr double kDefaultRecordingSeconds = 600;
constexpr std::chrono::milliseconds kFarewell{200};  // for the quit message to get through

// `startTime`: of the built-in day.
static FeedSource lf_source(const StandinOptions& options, double startTime)
{
    if (!options.recording.empty()) {
        return FeedSource(options.recording);
    }
    DayOptions day;
    day.seed = options.seed;
    day.world = options.world;
    day.startTime = startTime;
    return FeedSource(day);
}

static int lf_writeRecording(const StandinOptions& options)
{
    const double seconds = options.seconds > 0 ? options.seconds : kDefaultRecordingSeconds;
    std::ofstream out(options.writeRecording);
    size_t count = 0;
    const FeedSource source = lf_source(options, DayOptions().startTime);
    for (const DayLine& line : source.lines(options.feed.from, options.feed.from + seconds)) {
        out << line.text << '\n';
        ++count;
    }
    std::cout << count << " lines written\n";
    return out.good() ? 0 : 1;
}

// One run: everything between "ready" and the summary.
class Run
{
public:
    explicit Run(const StandinOptions& options)
        : m_options(options), m_simulator(simulatorOptions(options)), m_server(m_simulator, options.server),
          m_signals(m_context, SIGINT, SIGTERM), m_reports(m_context), m_end(m_context), m_begin(m_context)
    {
    }

    int run()
    {
        nlohmann::ordered_json ready{{"ready", true}};
        if (m_options.files) {
            m_files = std::make_unique<FileServer>(*m_options.files);
            ready["http"] = m_files->start();
        }
        if (m_options.noSimulatorFor <= 0) {
            tellAddress(ready, m_server.start());
        } else {
            at(m_begin, m_options.noSimulatorFor, [this] { m_server.start(); });
        }
        if (!m_options.noFeed) {
            m_player = std::make_unique<FeedPlayer>(
                lf_source(m_options, static_cast<double>(std::time(nullptr)) - m_options.feed.from),
                m_options.feed);
            m_player->start();
            ready["feed"] = m_options.feed.port;
        }
        if (m_options.realTrafficPort) {
            m_realTraffic = std::make_unique<RealTrafficClient>(*m_options.realTrafficPort);
        }
        planFaults();
        waitForEnd();
        std::cout << ready.dump() << std::endl;
        {
            const StandardInput words([this](std::string_view word) {
                asio::post(m_context, [this, word = std::string(word)] { play(word); });
            });
            m_context.run();
        }
        return close();
    }

private:
    static SimulatorOptions simulatorOptions(const StandinOptions& options)
    {
        SimulatorOptions simulator = options.simulator;
        simulator.zuluStart = std::time(nullptr);
        return simulator;
    }

    static void tellAddress(nlohmann::ordered_json& ready, const ServerAddress& address)
    {
        ready["ipv4"] = address.ipv4Port;
        ready["ipv6"] = address.ipv6Port;
        ready["pipe"] = address.pipeFile;
    }

    template <typename Act>
    void at(asio::steady_timer& timer, double seconds, Act act)
    {
        timer.expires_after(std::chrono::milliseconds(static_cast<int64_t>(seconds * 1000)));
        timer.async_wait([act](std::error_code error) {
            if (!error) {
                act();
            }
        });
    }

    void planFaults()
    {
        m_faults.reserve(m_options.faults.size());  // a timer that waits must stay where it is
        for (const PlannedFault& fault : m_options.faults) {
            m_faults.emplace_back(m_context);
            at(m_faults.back(), fault.second, [this, &fault] { play(fault.word); });
        }
    }

    void play(const std::string& word)
    {
        const FaultTargets targets{&m_simulator, &m_server, m_player.get(), m_realTraffic.get(),
                                   m_files.get()};
        if (!gf_playFault(word, targets)) {
            std::cerr << "velatra-standin: \"" << word << "\" can't be played" << std::endl;
        }
    }

    void waitForEnd()
    {
        m_signals.async_wait([this](std::error_code, int) { m_context.stop(); });
#ifdef SIGUSR1
        m_reports.add(SIGUSR1);
        waitForReport();
#endif
        if (m_options.seconds > 0) {
            at(m_end, m_options.seconds, [this] { m_context.stop(); });
        }
    }

    void waitForReport()
    {
        m_reports.async_wait([this](std::error_code error, int) {
            if (!error) {
                report();
                waitForReport();
            }
        });
    }

    RunFacts facts() const
    {
        RunFacts facts;
        facts.world = m_options.world.string();
        facts.feed = m_options.noFeed              ? "none"
                     : m_options.recording.empty() ? format("built-in day, seed {}", m_options.seed)
                                                   : m_options.recording.filename().string();
        facts.feedLines = m_player ? m_player->sent() : 0;
        facts.httpRequests = m_files ? m_files->requests() : 0;
        if (m_realTraffic) {
            const PositionReport report = m_realTraffic->report();
            facts.positionLines = report.positions;
            facts.timeLines = report.times;
            facts.realTrafficConnections = report.connections;
            facts.lastPosition = report.lastPosition;
        }
        return facts;
    }

    void writeFiles() const
    {
        gf_writeSummary(m_simulator, facts(), m_options.out);
        Chart chart;
        chart.title = "Velatra";
        chart.subtitle = facts().feed;
        const UserState user = m_simulator.user();
        chart.user = gf_placeOf(user);
        chart.userHeading = user.heading;
        chart.atDayAirport = m_options.recording.empty();
        chart.lives = m_simulator.lives();
        gf_writeRunFile(m_options.out / "traffic.svg", gf_trafficSvg(chart));
    }

    // A file that can't be written doesn't end the run: the next report may find room.
    bool report() const
    {
        try {
            if (!m_options.out.empty()) {
                writeFiles();
            }
            return true;
        } catch (const std::exception& e) {
            std::cerr << "velatra-standin: " << e.what() << std::endl;
            return false;
        }
    }

    int close()
    {
        if (m_player) {
            m_player->stop();
        }
        const bool written = report();
        if (m_options.quitAtEnd) {
            m_simulator.quit();
            std::this_thread::sleep_for(kFarewell);
        }
        m_server.stop();
        return written ? 0 : 1;
    }

    const StandinOptions& m_options;
    VirtualSimulator m_simulator;
    SimServer m_server;
    std::unique_ptr<FileServer> m_files;
    std::unique_ptr<FeedPlayer> m_player;
    std::unique_ptr<RealTrafficClient> m_realTraffic;
    asio::io_context m_context;
    asio::signal_set m_signals;
    asio::signal_set m_reports;
    asio::steady_timer m_end;
    asio::steady_timer m_begin;
    std::vector<asio::steady_timer> m_faults;
};

int main(int argc, char** argv)
{
    try {
        int exitCode = 0;
        const auto options = gf_standinOptions(argc, argv, exitCode);
        if (!options) {
            return exitCode;
        }
        if (!options->writeRecording.empty()) {
            return lf_writeRecording(*options);
        }
        return Run(*options).run();
    } catch (const std::exception& e) {
        std::cerr << "velatra-standin: " << e.what() << std::endl;
        return 1;
    }
}
