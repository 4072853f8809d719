// Random aprons: stands that differ by a little, near each other, with a history of a few flights, and
// aircraft that fit some of them. The engine as at the start of a run, and the same aprons with every run.
#pragma once

#include "airports/airports.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string>

namespace vlt {

inline uint32_t draw(uint32_t n)
{
    return gf_randomNumber() % n;
}
// One of these values.
template <typename Value>
Value one(std::initializer_list<Value> values)
{
    return values.begin()[draw(static_cast<uint32_t>(values.size()))];
}

class Apron : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        gf_seedRandom(3);
    }
    void TearDown() override
    {
        gf_freshRun();
    }

    static double metres(double nm)
    {
        return nm * kMetresPerNm;
    }
    static LatLon somewhere()
    {
        return gf_placeOf(gf_groundSample(draw(400) - 200.0, draw(4) * 10.0, 0, 0));
    }
    static HourStamp stamp()
    {
        return {one({1U, 7U}), one({0U, 10U, 46U, 47U})};
    }
    static double halfSpan()
    {
        return one({5.0, 10.0, 17.0, 17.79, 17.81, 32.0});
    }

    static StandOption option()
    {
        StandOption made;
        made.airline = one({"BAW", "KLM", "PVT"});
        made.type = one({"A319", "B738"});
        made.callsign = one({"BAW1", "KLM9", "BAW3"});
        made.coupledCs = one({"", "BAW1", "BAW2"});
        made.day = one({1, 7});
        hoursToSet(one({"0", "10,11", "11,20,47", "0,10,11,20", "1,47", "24", "25,33", "6,34,37"}),
                   made.hours);
        made.sequence = one({0, 1, 2});
        made.real = draw(3) != 0;
        return made;
    }
    // An apron anew, some of the stands taken by live aircraft.
    static void build()
    {
        parkApf.stands.clear();
        const uint32_t history = one({0U, 3U, 12U});
        for (uint32_t i = one({0U, 1U, 3U, 10U, 11U}); i > 0; --i) {
            ParkPos& stand = gf_addStand(format("A{}", i).c_str(), draw(40) * 10 - 200.0, draw(4) * 10.0, 90);
            stand.radius = halfSpan() + one({-5.0, -1.81, -1.79, 0.0, 6.99, 7.01, 10.49, 10.51, 21.01});
            stand.radius = std::max(stand.radius, 0.0) / kMetresPerNm;
            stand.heli = draw(6) == 0;
            stand.ramp = draw(2) == 0;
            stand.cargo = draw(4) == 0;
            stand.occupiedByLive = draw(4) == 0 ? 20000 : kNobody;
            for (uint32_t k = draw(history + 1); k > 0; --k) {
                stand.options.push_back(option());
            }
        }
    }
    static LiveAc aircraft()
    {
        LiveAc ac;
        ac.callsign = one({"BAW1", "BAW2", "KLM9"});
        ac.airline = one({"BAW", "BAW", "KLM", "PVT"});
        ac.model = one({"A319", "B738"});
        ac.category = one({AcCategory::Large, AcCategory::Large, AcCategory::Heavy, AcCategory::HighPerf,
                           AcCategory::Buzjets, AcCategory::Rotorcraft});
        ac.cargo = draw(5) == 0;
        ac.radius = halfSpan() / kMetresPerNm;
        return ac;
    }
};

}  // namespace vlt
