// The engine's tables empty, no airport, and the user far away, before and after every test.
#pragma once

#include "core/base/parameters.h"
#include "sim/client.h"
#include "support/aircraft.h"
#include "traffic/arrival.h"
#include "traffic/stays.h"
#include "traffic/traffic.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vlt {

class GroundPlace : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_clearTables();
        gf_resetSimClient();
        gf_forgetParkAirport();
        tick = 100'000;
        maxPark = 0;
        STRAIGHT_PBS_ONLY.value = false;
        LATERAL_RANGE.value = 40;
    }
    void TearDown() override
    {
        SetUp();
    }
    static bool sent(uint32_t event, uint32_t value)
    {
        return std::ranges::any_of(
            eventQueue, [&](const QueuedEvent& e) { return e.event == event && e.value == value; });
    }
};

}  // namespace vlt
