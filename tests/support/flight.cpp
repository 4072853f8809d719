#include "support/flight.h"

#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/run_state.h"
#include "core/traffic_loop.h"
#include "link/traffic_reader.h"
#include "liveries/liveries.h"
#include "sim/client.h"
#include "sim/requests.h"
#include "standin/direct.h"
#include "support/fresh_run.h"
#include "support/world.h"
#include "traffic/traffic.h"

namespace vlt {

static SimulatorOptions lf_options()
{
    SimulatorOptions options;
    options.user = {47.0, 8.0, 10000, 0, 0, false};
    options.anyTitle = true;
    options.keepCalls = true;
    return options;
}

void Flight::SetUp()
{
    gf_freshRun();
    trafficReader.setCentre({47.0, 8.0});
    gf_loadSmallWorld();
    gf_seedRandom(1);
    AUTO_RANGE.value = false;
    LATERAL_RANGE.value = 100;
    gf_applyLateralRange();
    COLLISION_USER_AIR.value = false;
    SIM_INSTALL_PATH.value = "C:\\Prepar3D v5";
    simulator = std::make_unique<VirtualSimulator>(lf_options());
    gf_setDirectSimulator(simulator.get());
    ASSERT_TRUE(gf_openSim());
    ASSERT_TRUE(gf_requestUserOnGround());
    requestUserPosition();
    firstTick = tick;
    pass(1.5);
    {
        intakeOpen = true;
    }
    ASSERT_TRUE(simRunning);
}

void Flight::TearDown()
{
    gf_closeSim();
    gf_setDirectSimulator(nullptr);
    gf_freshRun();
    gf_clearWorld();
}

void Flight::pass(double seconds, const std::function<void()>& eachTick)
{
    constexpr double kTickSeconds = 0.01;
    const int ticks = static_cast<int>(seconds / kTickSeconds + 0.5);
    for (int i = 0; i < ticks; ++i) {
        simulator->advance(kTickSeconds);
        gf_dispatchSim();
        trafficPass();
        if (eachTick) {
            eachTick();
        }
    }
}

std::optional<SimObject> Flight::object(const std::string& tailNumber) const
{
    for (const SimObject& candidate : simulator->objects()) {
        if (candidate.tailNumber == tailNumber) {
            return candidate;
        }
    }
    return std::nullopt;
}

double Flight::now() const
{
    return (tick - firstTick) / 100.0;
}

}  // namespace vlt
