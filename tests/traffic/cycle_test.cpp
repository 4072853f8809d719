// What the cycle gives to the simulator, and at which pace.
#include "traffic/cycle.h"

#include "core/base/locks.h"
#include "traffic/stage.h"

#include <chrono>
#include <future>
#include <mutex>

namespace vlt {

class Cycle : public Stage
{
};

TEST_F(Cycle, aDrivenAircraftSendsItsPlaceAndFeetASecond)
{
    LiveAc& ac = add("flying: 0^3000v1200@200+0 500^3100v1200@200 1000^3200v1200@200");
    ac.stream[1].tas = 230;
    updateLiveAc(ac);
    ASSERT_EQ(1U, fillBuffer.size());
    const PositionRecord& sent = fillBuffer[0];
    EXPECT_EQ(ac.objectid, sent.objectid);
    EXPECT_NEAR(ac.targetVs / 60, sent.vsOut, 1e-9);
    EXPECT_GT(sent.vsOut, 5) << "it climbs";
    EXPECT_EQ(230, sent.tasOut);
    LiveAc& stops = add("taxi: 0@10+0 0s", 20002, "DLH1");
    updateLiveAc(stops);
    EXPECT_EQ(0, stops.tasOut);
    LiveAc& gone = liveAcs.front();
    gone.stream.clear();
    updateLiveAc(gone);
    EXPECT_TRUE(goes(gone));
}

TEST_F(Cycle, removalsAndCreationsGoOutAtTheirPace)
{
    gf_emptyQueues();
    liveCreateQueue.resize(3);
    staticCreateQueue.resize(9);
    for (CreateRequest& request : liveCreateQueue) {
        request.hexid = 20001;
    }
    removeWaitQueue.assign(90, 7);
    for (tick = 0; tick < 300; ++tick) {
        gf_meterRequests();
    }
    EXPECT_EQ(30U, removeQueue.size());
    ASSERT_EQ(6U, createQueue.size());
    EXPECT_TRUE(createQueue[2].hexid == 20001 && createQueue[3].hexid != 20001) << "live ones first";
    gf_emptyQueues();
}

TEST_F(Cycle, aBusySimulatorGetsFewerPositionsUnlessItsFramesAreFast)
{
    for (const float frames : {50.0F, 51.0F}) {
        const bool fast = frames > 50;
        frameRate = frames;
        fillBuffer.assign(3, {});
        sendBuffer.clear();
        std::unique_lock busy(simCallMutex);
        auto cycle = std::async(std::launch::async, gf_handOverPositions);
        const auto longest = fast ? std::chrono::milliseconds(20) : std::chrono::milliseconds(5000);
        EXPECT_EQ(fast, cycle.wait_for(longest) == std::future_status::timeout) << frames;
        busy.unlock();
        cycle.wait();
        EXPECT_EQ(fast ? 3U : 0U, sendBuffer.size()) << frames;
        EXPECT_TRUE(fillBuffer.empty()) << frames;
    }
}

}  // namespace vlt
