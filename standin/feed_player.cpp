#include "standin/feed_player.h"

#include "core/base/text.h"

#include <algorithm>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <charconv>
#include <cmath>
#include <deque>
#include <fstream>
#include <future>
#include <iostream>
#include <limits>
#include <optional>
#include <stdexcept>

namespace vlt {

constexpr size_t kStampPlace = 14;
constexpr double kStretch = 300;        // seconds made at a time
constexpr size_t kMostRepeated = 5000;  // lines
constexpr double kWeatherPeriod = 5;    // seconds between two reports of the pressure

static std::optional<double> lf_stamp(const std::string& line)
{
    const auto fields = gf_split(line, ',');
    if (fields.size() <= kStampPlace) {
        return std::nullopt;
    }
    double stamp = 0;
    const auto text = fields[kStampPlace];
    const auto result = std::from_chars(text.data(), text.data() + text.size(), stamp);
    return result.ec == std::errc() ? std::optional(stamp) : std::nullopt;
}

static std::string lf_withClockOff(const std::string& line, double seconds)
{
    const auto stamp = lf_stamp(line);
    if (!stamp || seconds == 0) {
        return line;
    }
    const auto fields = gf_split(line, ',');
    const std::string_view text = fields[kStampPlace];
    const auto at = static_cast<size_t>(text.data() - line.data());
    return line.substr(0, at) + format("{:.3f}", *stamp + seconds) + line.substr(at + text.size());
}

FeedSource::FeedSource(const std::filesystem::path& recording)
{
    std::ifstream in(recording);
    if (!in) {
        throw std::runtime_error(format("recording \"{}\" can't be read", recording.string()));
    }
    std::optional<double> first;
    double last = 0;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty()) {
            continue;
        }
        if (const auto stamp = lf_stamp(line)) {
            first = first.value_or(*stamp);
            last = std::max(last, *stamp - *first);
        }
        m_recorded.push_back({last, std::move(line)});
    }
}

FeedSource::FeedSource(const DayOptions& day) : m_day(std::make_unique<BuiltinDay>(day)) {}

void FeedSource::repeat(double from, double every, double silent)
{
    if (!(every > silent && silent >= 0)) {
        throw std::invalid_argument("nothing would be heard of a stretch that is repeated");
    }
    m_repeatFrom = from;
    m_repeatEvery = every;
    m_silentAtEnd = silent;
}

std::vector<DayLine> FeedSource::lines(double from, double to, const std::stop_token& stop) const
{
    if (m_repeatEvery == 0) {
        return linesOnce(from, to, stop);
    }
    std::vector<DayLine> all;
    const auto roundAt = [this](double time) { return std::floor((time - m_repeatFrom) / m_repeatEvery); };
    for (double round = std::max(roundAt(from), 0.0); round <= roundAt(to); ++round) {
        const double later = round * m_repeatEvery;
        const double end = std::min(to - later, m_repeatFrom + m_repeatEvery - m_silentAtEnd);
        for (DayLine& line : linesOnce(std::max(from - later, round > 0 ? m_repeatFrom : from), end, stop)) {
            all.push_back({line.time + later, lf_withClockOff(line.text, later)});
        }
    }
    return all;
}

std::vector<DayLine> FeedSource::linesOnce(double from, double to, const std::stop_token& stop) const
{
    if (m_day) {
        return m_day->lines(from, to, stop);
    }
    const auto before = [](const DayLine& line, double time) { return line.time < time; };
    const auto first = std::lower_bound(m_recorded.begin(), m_recorded.end(), from, before);
    const auto last = std::lower_bound(first, m_recorded.end(), to, before);
    return {first, last};
}

double FeedSource::end() const
{
    if (m_day || m_repeatEvery > 0) {
        return std::numeric_limits<double>::infinity();
    }
    return m_recorded.empty() ? 0 : std::nextafter(m_recorded.back().time, m_recorded.back().time + 1);
}

FeedPlayer::FeedPlayer(FeedSource source, FeedOptions options)
    : m_source(std::move(source)), m_options(options)
{
}

FeedPlayer::~FeedPlayer()
{
    stop();
}

void FeedPlayer::start()
{
    m_thread = std::jthread([this] {
        try {
            run();
        } catch (const std::exception& e) {
            std::cerr << "feed player: " << e.what() << std::endl;
        }
    });
}

void FeedPlayer::stop()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_stopping = true;
    }
    m_stop.request_stop();
    m_wake.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

bool FeedPlayer::waitUntil(double feedTime, std::chrono::steady_clock::time_point begun)
{
    const std::chrono::duration<double> after((feedTime - m_options.from) / m_options.speed);
    const auto due = begun + std::chrono::duration_cast<std::chrono::steady_clock::duration>(after);
    std::unique_lock lock(m_mutex);
    return !m_wake.wait_until(lock, due, [this] { return m_stopping; });
}

void FeedPlayer::run()
{
    asio::io_context context;
    asio::ip::udp::socket socket(context, asio::ip::udp::v4());
    const auto host = asio::ip::address_v4::loopback();
    const auto begun = std::chrono::steady_clock::now();
    const std::string weather = format("{{\"QNH\": {}}}", m_options.qnh);
    double nextWeather = m_options.from;
    std::deque<std::string> latest;  // for a burst
    // The next stretch is made while this one is played, so that the feed has no hiccup between.
    const auto made = [this](double from) {
        return std::async(std::launch::async,
                          [this, from] { return m_source.lines(from, from + kStretch, m_stop.get_token()); });
    };
    auto next = made(m_options.from);
    for (double from = m_options.from; from < m_source.end(); from += kStretch) {
        const std::vector<DayLine> lines = next.get();
        next = made(from + kStretch);
        for (const DayLine& line : lines) {
            if (!waitUntil(line.time, begun)) {
                return;
            }
            if (m_silent) {
                continue;
            }
            std::error_code ignored;  // a closed port answers by an error, which is no reason to end
            if (m_options.weatherPort != 0 && line.time >= nextWeather) {
                socket.send_to(asio::buffer(weather), {host, m_options.weatherPort}, 0, ignored);
                nextWeather = line.time + kWeatherPeriod;
            }
            const std::string text = lf_withClockOff(line.text, m_clockOff);
            socket.send_to(asio::buffer(text), {host, m_options.port}, 0, ignored);
            ++m_sent;
            latest.push_back(text);
            if (latest.size() > kMostRepeated) {
                latest.pop_front();
            }
            const size_t repeated = m_burst.exchange(0);
            for (size_t i = 0; i < repeated; ++i, ++m_sent) {
                socket.send_to(asio::buffer(latest[i % latest.size()]), {host, m_options.port}, 0, ignored);
            }
        }
    }
}

}  // namespace vlt
