// The engine's tables empty, no airport, and the user far away, before and after every test.
#pragma once

#include "sim/client.h"
#include "sim/requests.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
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
        gf_freshRun();
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
