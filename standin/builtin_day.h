// The built-in day: the feed's lines of an invented airport's traffic, for runs without a
// recording.
//
// Deterministic: the same seed, world and stretch of time give the same lines. A BuiltinDay is used
// by one thread at a time.
#pragma once

#include "standin/day_flights.h"
#include "standin/world_tables.h"

#include <cstdint>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace vlt {

// The day's second 0 where no other is told: a Thursday, 09:20 UTC. The week of history begins with it.
inline constexpr int64_t kDayStart = 1717665600;  // seconds since 1970

struct DayOptions {
    uint64_t seed = 1;
    double startTime = static_cast<double>(kDayStart);  // seconds since 1970 of the day's second 0
    std::filesystem::path world = gf_sampleWorld();
};

// One datagram and when it is sent.
struct DayLine {
    double time = 0;  // seconds of the day
    std::string text;
};

class BuiltinDay
{
public:
    explicit BuiltinDay(DayOptions options);

    // Everything sent from `from` up to, but without, `to`, seconds of the day, in its order.
    // What a stop leaves unfinished isn't complete and of no use.
    std::vector<DayLine> lines(double from, double to, const std::stop_token& stop = {}) const;

    // The flights under way at some time within the stretch, by kind and number.
    std::vector<DayFlight> flights(double from, double to, const std::stop_token& stop = {}) const;

private:
    DayOptions m_options;
    Fleet m_fleet;
};

}  // namespace vlt
