// A whole flight on a virtual clock: the engine with all its rooms against the virtual simulator, both
// driven tick by tick on the test's own thread.
#pragma once

#include "standin/virtual_simulator.h"
#include "support/feed_line.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vlt {

class Flight : public ::testing::Test
{
protected:
    // Loads the small world and connects to a simulator whose user flies at 47 N 8 E, 10000 ft.
    void SetUp() override;
    void TearDown() override;

    // Lets time pass, with every pass of the traffic loop; `eachTick` runs after each.
    void pass(double seconds, const std::function<void()>& eachTick = {});

    // The one object of the simulator with this tail number; none if there is none.
    std::optional<SimObject> object(const std::string& tailNumber) const;

    // Seconds since the flight began.
    double now() const;

    std::unique_ptr<VirtualSimulator> simulator;
    int32_t firstTick = 0;
};

}  // namespace vlt
