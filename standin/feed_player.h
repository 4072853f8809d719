// Plays the traffic feed: datagrams of a recording, or of the built-in day, at the pace of their
// time.
//
// FeedSource is used by one thread at a time. FeedPlayer has a thread of its own between start and
// stop; its other functions may be called from any thread.
#pragma once

#include "standin/builtin_day.h"
#include "traffic/traffic.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace vlt {

// Where lines come from: a stretch at a time, times in seconds from the beginning.
class FeedSource
{
public:
    // A recording: one datagram per line, timed by its time stamp, the 15th of its comma-separated
    // places. A line without one, or with an earlier one, is sent with the line before it. Throws
    // std::runtime_error if the file can't be read.
    explicit FeedSource(const std::filesystem::path& recording);
    explicit FeedSource(const DayOptions& day);

    // From now on the stretch that begins at `from` comes again every so many seconds, its time stamps going
    // on; the last `silent` of these are without lines, so that nobody leaps to where he was at the
    // beginning. Throws std::invalid_argument unless `every` is above `silent`.
    void repeat(double from, double every, double silent);
    // The lines of `from` up to, but without, `to`.
    std::vector<DayLine> lines(double from, double to, const std::stop_token& stop = {}) const;
    // No line comes at or after this; infinite for the built-in day, and if it is repeated.
    double end() const;

private:
    std::vector<DayLine> linesOnce(double from, double to, const std::stop_token& stop) const;

    std::vector<DayLine> m_recorded;
    std::unique_ptr<BuiltinDay> m_day;
    double m_repeatFrom = 0;
    double m_repeatEvery = 0;  // seconds; 0: nothing comes again
    double m_silentAtEnd = 0;  // seconds of each round
};

struct FeedOptions {
    uint16_t port = 49005;
    uint16_t weatherPort = 49004;  // 0 sends no weather
    int qnh = kStandardQnh;        // hectopascal
    double speed = 1;              // seconds of the feed in a second
    double from = 0;               // seconds of the feed to begin at
};

class FeedPlayer
{
public:
    FeedPlayer(FeedSource source, FeedOptions options);
    ~FeedPlayer();
    FeedPlayer(const FeedPlayer&) = delete;
    FeedPlayer& operator=(const FeedPlayer&) = delete;

    void start();
    void stop();  // within milliseconds
    // What is wrong with the feed from now on.
    void setSilent(bool silent)
    {
        m_silent = silent;
    }
    void setClockOff(double seconds)
    {
        m_clockOff = seconds;
    }
    // With the next line so many of the last ones come again, as fast as they can be sent.
    void burst(size_t lines)
    {
        m_burst = lines;
    }
    uint64_t sent() const
    {
        return m_sent;
    }

private:
    void run();
    bool waitUntil(double feedTime, std::chrono::steady_clock::time_point begun);  // false to stop

    const FeedSource m_source;
    const FeedOptions m_options;
    std::atomic<uint64_t> m_sent = 0;  // [atomic] the thread writes
    std::atomic<bool> m_silent = false;
    std::atomic<double> m_clockOff = 0;  // seconds
    std::atomic<size_t> m_burst = 0;     // lines to come
    std::mutex m_mutex;                  // m_stopping
    std::condition_variable m_wake;
    bool m_stopping = false;
    std::stop_source m_stop;  // for the lines being made
    std::jthread m_thread;
};

}  // namespace vlt
