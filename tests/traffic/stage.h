// The stage of this folder's tests, and notations in which one row of a table tells a whole situation.
//
// A sample: metres east of 47 N 8 E, then what isn't usual: "," metres north, "^" feet, in the air, "v" feet
// per minute, "@" knots (10, 0 while it stands), "+" seconds after the sample before (5), and "s": it stands.
// A scene: the phase, flags, ":" and the stream, as in "taxi rolls: -60@90 0@80 60@70".
#pragma once

#include "core/base/parameters.h"
#include "core/base/text.h"
#include "sim/requests.h"
#include "sim/wire/ids.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "support/world.h"
#include "traffic/geodesy.h"
#include "traffic/performance.h"
#include "traffic/stand_holding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <random>
#include <sstream>
#include <stdexcept>

namespace vlt {

class Stage : public ::testing::Test
{
protected:
    // A fresh run with the small world.
    void SetUp() override
    {
        gf_freshRun();
        gf_clearWorld();
        gf_loadSmallWorld();
    }

    // The rows of a table, each with a fresh run. By hand, since clang 14 doesn't compile views.
    template <typename Row>
    struct Afresh {
        struct Iterator {
            Stage* stage;
            const Row* row;
            const Row& operator*() const
            {
                stage->SetUp();
                return *row;
            }
            void operator++()
            {
                ++row;
            }
            bool operator!=(const Iterator& other) const
            {
                return row != other.row;
            }
        };
        Iterator first, last;
        Iterator begin() const
        {
            return first;
        }
        Iterator end() const
        {
            return last;
        }
    };
    template <typename Row, size_t count>
    Afresh<Row> afresh(const Row (&rows)[count])
    {
        return {{this, rows}, {this, rows + count}};
    }

    // Samples of which the first comes 5 s, or what it tells, after the tick `after`.
    static std::deque<PosSample> samples(const std::string& text, int32_t after)
    {
        std::deque<PosSample> list;
        std::istringstream words(text);
        for (std::string word; words >> word;) {
            const auto number = [&word](char mark, double usual) {
                const size_t at = word.find(mark);
                return at == std::string::npos ? usual : std::stod(word.substr(at + 1));
            };
            const bool stands = word.ends_with('s');
            after += static_cast<int32_t>(std::lround(number('+', 5) * kTicksPerSecond));
            PosSample s =
                gf_groundSample(std::stod(word), number(',', 0), number('@', stands ? 0 : 10), after);
            s.stationary = stands;
            s.altitude = number('^', 0);
            s.airborne = s.altitude > 0;
            s.vs = number('v', 0);
            list.push_back(s);
        }
        return list;
    }
    template <typename Place>
    static double east(const Place& at)
    {
        return std::remainder(at.lon - 8, 360.0) * 60 * std::cos(47 * kRadPerDeg) * kMetresPerNm;
    }
    template <typename Place>
    static double north(const Place& at)
    {
        return (at.lat - 47) * 60 * kMetresPerNm;
    }
    static std::string textOf(const std::deque<PosSample>& list)
    {
        std::string text;
        for (size_t i = 0; i < list.size(); ++i) {
            const PosSample& s = list[i];
            const auto add = [&text](const char* mark, double value, double usual) {
                const double rounded = std::round(value) + 0.0;  // no -0
                text += rounded == usual ? "" : format("{}{}", mark, rounded);
            };
            add(i == 0 ? "" : " ", east(s), NAN);
            add(",", north(s), 0);
            add("^", s.altitude, 0);
            add("v", s.vs, 0);
            add("@", s.speed, s.stationary ? 0 : 10);
            add("+", i == 0 ? 5 : (s.time - list[i - 1].time) / 100.0, 5);
            text += s.stationary ? "s" : "";
        }
        return text;
    }

    static constexpr std::pair<const char*, bool LiveAc::*> kFlags[] = {
        {"runs", &LiveAc::takeOff},          {"rolls", &LiveAc::landingRoll},
        {"lands", &LiveAc::approach},        {"landed", &LiveAc::landed},
        {"holds", &LiveAc::holding},         {"leaves", &LiveAc::pullOutPending},
        {"towed", &LiveAc::towed},           {"back", &LiveAc::backwards},
        {"blends", &LiveAc::touchdownBlend}, {"right", &LiveAc::pushTurnRight},
        {"known", &LiveAc::pushTurnKnown}};

    // Adds the aircraft of a scene, an A319 at the stream's first sample with its nose east. A category is a
    // flag too, and "extended": five invented samples are still to come.
    static LiveAc& add(const std::string& scene, uint32_t hexid = 20001, const char* callsign = "BAW3AK")
    {
        LiveAc& ac = gf_addOnGround(hexid, callsign, StState::Taxi);
        const size_t colon = scene.find(':');
        ac.stream = samples(scene.substr(colon + 1), tick - 500);
        ac.onGround = !ac.stream.front().airborne;
        ac.lat = ac.stream.front().lat;
        ac.lon = ac.stream.front().lon;
        ac.alt = ac.stream.front().altitude;
        std::istringstream words(scene.substr(0, colon));
        for (std::string word; words >> word;) {
            const auto flag = std::ranges::find(kFlags, word, [](const auto& f) { return f.first; });
            const auto category = std::ranges::find(kCategoryNames, word);
            if (flag != std::end(kFlags)) {
                ac.*flag->second = true;
            } else if (category != kCategoryNames.end()) {
                ac.category = static_cast<AcCategory>(category - kCategoryNames.begin());
                gf_applyPerformance(ac);
            } else if (word == "extended") {
                ac.extendCount = 5;
            } else {
                for (ac.st = {}; stateWord(ac.st) != word;) {  // throws beyond the last
                    ac.st = static_cast<StState>(static_cast<int>(ac.st) + 1);
                }
            }
        }
        return ac;
    }
    // Adds a static one at 47 N 8 E, as wide as an A319.
    static StaticAc& addStatic(uint32_t standId = 0, HourStamp stamp = {})
    {
        StaticAc& parked = staticAcs.emplace_back();
        parked.standId = standId;
        parked.stamp = stamp;
        parked.callsign = "DLH1*";
        parked.standLat = 47;
        parked.standLon = 8;
        parked.radius = 17.05 / kMetresPerNm;
        parked.objectid = 77;
        parked.fs = FsState::Active;
        return parked;
    }
    // Adds an aircraft with random legs and bends in the air ahead of it; every other road leads over the
    // date line.
    static LiveAc& addRoad(const std::string& state, uint32_t seed)
    {
        std::mt19937 random(seed);
        const auto from = [&random](int least, int most) {
            return least + static_cast<int>(random() % static_cast<uint32_t>(most - least + 1));
        };
        std::string scene = state + ": 0^5000@200";
        double way = 90 * kRadPerDeg, east = 0, north = 0;
        for (int i = 0; i < 12; ++i) {
            const int metres = from(500, 2500);
            way += from(-120, 120) * kRadPerDeg;
            east += metres * std::sin(way);
            north += metres * std::cos(way);
            scene += format(" {:.0f},{:.0f}^{}v{}@{}+{}", east, north, from(3000, 7000), from(-3000, 3000),
                            from(150, 300), from(1, 20));
        }
        LiveAc& ac = add(scene);
        for (PosSample& s : ac.stream) {
            s.lon = std::remainder(s.lon + (seed % 2 == 0 ? 171.999 : 0), 360.0);
        }
        ac.lon = ac.stream[0].lon;
        return ac;
    }
    // The scene that an aircraft is in, "goes" for one that is being removed; and what stands before its
    // colon.
    static std::string look(const LiveAc& ac)
    {
        return stateOf(ac) + ": " + textOf(ac.stream);
    }
    static std::string stateOf(const LiveAc& ac)
    {
        std::string text(stateWord(ac.st));
        for (const auto& [name, flag] : kFlags) {
            text += ac.*flag ? format(" {}", name) : "";
        }
        text += ac.extendCount > 0 ? " extended" : "";
        text += ac.fs == FsState::RemovingFromSim ? " goes" : "";
        return text;
    }
    static std::string lookWithoutTimes(LiveAc ac)
    {
        for (int32_t time = 0; PosSample & s : ac.stream) {
            s.time = time += 500;
        }
        return look(ac);
    }

    // What was commanded since the last call: "throttle=4914 gear=1 lights=1111010", the lights in the order
    // of nav, beacon, landing, taxi, strobes, logo, cabin.
    static std::string commands()
    {
        static const std::map<uint32_t, std::string> names{
            {THROTTLE_SET, " throttle="},   {FLAPS_SET, " flaps="},      {SPOILERS_SET, " spoilers="},
            {ENGINE_AUTO_START, " start="}, {GEAR_SET, " gear="},        {ENGINE_AUTO_SHUTDOWN, " shutdown="},
            {CABIN_LIGHTS_SET, " cabin="},  {NAV_LIGHTS_SET, " lights="}};
        std::string text;
        uint32_t before = 0;
        for (const QueuedEvent& e : eventQueue) {
            const bool inRow =
                e.event != NAV_LIGHTS_SET && (!names.contains(e.event) || before == LOGO_LIGHTS_SET);
            text += format("{}{}", inRow ? "" : names.at(e.event), e.value);
            before = e.event;
        }
        eventQueue.clear();
        return text.empty() ? text : text.substr(1);
    }
    static bool goes(const StaticAc& ac)
    {
        return ac.fs == FsState::RemovingFromSim;
    }
};

}  // namespace vlt
