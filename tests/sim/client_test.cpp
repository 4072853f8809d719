#include "sim/client.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "liveries/liveries.h"
#include "sim/detection.h"
#include "sim/dispatch.h"
#include "sim/frame.h"
#include "sim/requests.h"
#include "sim/user_aircraft.h"
#include "sim/wire/ids.h"
#include "sim/wire/packets.h"
#include "standin/direct.h"
#include "standin/virtual_simulator.h"
#include "support/fresh_run.h"
#include "support/temp_folder.h"
#include "support/world.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace vlt {

class ClientTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        gf_loadSmallWorld();
        SIM_INSTALL_PATH.value = "C:\\Prepar3D v5";
        wantedSimVersion = 5;
    }
    void TearDown() override
    {
        gf_closeSim();
        gf_setDirectSimulator(nullptr);
        gf_freshRun();
        gf_clearWorld();
    }
    void connect()
    {
        gf_setDirectSimulator(&simulator);
        ASSERT_TRUE(gf_openSim());
    }
    static void dispatch(PacketWriter& writer)
    {
        const auto message = writer.finish();
        gf_dispatchMessage(message);
    }
    // A message of whole numbers alone.
    static void dispatch(SimMessageId id, const std::vector<uint32_t>& words)
    {
        PacketWriter w(id);
        for (const uint32_t word : words) {
            w.u32(word);
        }
        dispatch(w);
    }
    static void open(const char* name)
    {
        PacketWriter w(SimMessageId::Open);
        w.text(name, 256);
        for (const uint32_t number : {5, 4, 9, 1, 5, 4, 0, 0, 0, 0}) {
            w.u32(number);
        }
        dispatch(w);
    }
    static void event(uint32_t id, uint32_t data)
    {
        dispatch(SimMessageId::Event, {0, id, data});
    }
    static PacketWriter data(SimMessageId id, uint32_t request, uint32_t object)
    {
        PacketWriter w(id);
        w.u32(request).u32(object).u32(0).u32(0).u32(1).u32(1).u32(1);
        return w;
    }
    static void user(double lat, double lon, double agl)
    {
        auto w = data(SimMessageId::ObjectData, kReqUser, 7);
        for (const double value : {lat, lon, 0.0, 0.0, 1.0, 5000.0, agl, 120.0}) {
            w.f64(value);
        }
        w.i64(0).i64(1).i64(2026).i64(0);
        dispatch(w);
    }
    static void aircraft(uint32_t object, const char* atcId, bool onGround = false, double agl = 500)
    {
        auto w = data(SimMessageId::ObjectDataByType, kReqAircraftInRange, object);
        w.f64(agl).f64(1400).i64(onGround ? 1 : 0).text(atcId, 32);
        dispatch(w);
    }
    static void added(uint32_t object, uint32_t type = 2)
    {
        dispatch(SimMessageId::ObjectAddRemove, {0, kEventObjectAdded, object, type});
    }
    static std::vector<SimMessage> messages()
    {
        const std::scoped_lock lock(messageMutex);
        return std::exchange(simMessages, {});
    }

    VirtualSimulator simulator{SimulatorOptions{}};
};

TEST_F(ClientTest, connectsOnlyToTheWantedSimulator)
{
    const struct {
        const char *name, *path;
        int wanted;
        bool accepted;
    } cases[] = {
        {"Lockheed Martin Prepar3D v5", "C:\\P3D", 5, true},
        {"Lockheed Martin Prepar3D v5", "C:\\P3D", 6, false},
        {"Lockheed Martin Prepar3D v6", "C:\\Prepar3D V6", 5, true},
        {"Lockheed Martin Prepar3D v4", "C:\\Prepar3D v5", 5, false},
        {"KittyHawk", "C:\\Prepar3D v5", 5, false},
        {"SunRise", "C:\\Prepar3D v5", 5, false},
        {"Lockheed Martin\xAE Prepar3D\xAE v5", "C:\\Prepar3D v5", 6, true},
    };
    for (const auto& c : cases) {
        SIM_INSTALL_PATH.value = c.path;
        wantedSimVersion = c.wanted;
        bool accepted = true;
        try {
            open(c.name);
        } catch (const UserErrorException&) {
            accepted = false;
        }
        EXPECT_EQ(c.accepted, accepted) << c.name << c.path;
    }
    EXPECT_EQ("Lockheed Martin Prepar3D v5 (5.4.9.1)", display.sim.name.load());
}

TEST_F(ClientTest, theWaitingMessageNamesTheVersion)
{
    for (const auto& [path, version] :
         {std::pair{"D:\\Prepar3D v6", "6"}, {"D:\\P3DV5\\v6", "5"}, {"D:\\P3D", "5"}}) {
        SIM_INSTALL_PATH.value = path;
        EXPECT_EQ(version, gf_expectedSimVersion()) << path;
    }
    P3D_VERSION.value = 4;
    EXPECT_THROW(gf_expectedSimVersion(), UserErrorException);
    P3D_VERSION.value = 5;
}

TEST_F(ClientTest, eventsOfTheSimulatorSteerTheRun)
{
    event(kEventSim, 1);
    EXPECT_TRUE(simRunning);
    event(kEventSim, 0);
    EXPECT_FALSE(simRunning);
    const std::function<void()> newFlights[] = {
        [] { event(kEventPositionChanged, 0); },
        [] { event(kEventFlightLoaded, 0); },
        [] { dispatch(SimMessageId::FileName, {}); },
        [] { user(47, 8, 0), user(47.18, 8, 0); },
    };
    for (const auto& newFlight : newFlights) {
        ASSERT_TRUE(gf_resetRunState());
        newFlight();
        EXPECT_EQ(ExitReason::NewFlight, exitReason);
        EXPECT_EQ(30, restartDelaySeconds);
    }
    ASSERT_TRUE(gf_resetRunState());
    gf_resetSimClient();
    user(47, 8, 0);
    user(47.16, 8, 0);
    EXPECT_FALSE(stopRequested) << "9.6 nm are no jump";
}

TEST_F(ClientTest, userDataSetTheUser)
{
    event(kEventSim, 1);
    const auto report = data(SimMessageId::ObjectData, kReqUserOnGround, 7).i64(1).finish();
    gf_dispatchMessage(report);
    EXPECT_TRUE(secondDue);
    EXPECT_FALSE(userOnGroundKnown) << "without a position the report says nothing";
    user(47, 8, -3);
    EXPECT_EQ(0, gf_userRaw().agl);
    EXPECT_EQ(7U, userObjectId);
    gf_dispatchMessage(report);
    EXPECT_TRUE(userOnGroundKnown && userOnGround);
    user(NAN, 8, 0);
    EXPECT_EQ(47, gf_userRaw().lat) << "what isn't finite is dropped";
}

TEST_F(ClientTest, anObjectOfOursIsTakenOverAndAnnounced)
{
    connect();
    pendingCreates = {{1, 20001, "BAW1"}, {2, 20002, "BAW1"}, {3, 9, "KLM2*"}};
    added(50);
    added(51, 3);
    aircraft(50, "BAW1");
    EXPECT_EQ(2U, pendingCreates.size()) << "the first of two with one tail";
    auto posted = messages();
    ASSERT_EQ(1U, posted.size());
    EXPECT_EQ(SimMessageKind::LiveObject, posted[0].kind);
    EXPECT_EQ(20001U, posted[0].a);
    EXPECT_EQ(50U, posted[0].objectid);
    EXPECT_EQ(500, posted[0].y);
    ASSERT_EQ(3U, eventQueue.size());
    EXPECT_EQ(FREEZE_LATITUDE_LONGITUDE_SET, eventQueue[0].event);
    EXPECT_EQ(1U, eventQueue[2].value);
    added(52);
    aircraft(52, "KLM2*");
    posted = messages();
    ASSERT_EQ(1U, posted.size());
    EXPECT_EQ(SimMessageKind::StaticObject, posted[0].kind);
    added(53);
    aircraft(53, "STRANGER");
    EXPECT_TRUE(messages().empty());
}

TEST_F(ClientTest, objectDataComeOnlyForWhoNeedsThem)
{
    const struct {
        const char* what;
        uint32_t object;
        const char* atcId;
        double agl;
        size_t expected;
    } cases[] = {
        {"low", 50, "BAW1", 2500, 1}, {"high", 50, "BAW1", 2501, 0},       {"static", 50, "BAW1*", 0, 0},
        {"nameless", 50, "", 0, 0},   {"the user's own", 2, "BAW1", 0, 0}, {"not finite", 50, "BAW1", NAN, 0},
    };
    for (const auto& c : cases) {
        aircraft(c.object, c.atcId, true, c.agl);
        const auto posted = messages();
        EXPECT_EQ(c.expected, posted.size()) << c.what;
        if (!posted.empty()) {
            EXPECT_EQ(1U, posted[0].a);
            EXPECT_EQ(1400, posted[0].x);
        }
    }
}

TEST_F(ClientTest, exceptionsFindTheirCause)
{
    pendingCreates = {{17, 20001, "BAW1"}, {18, 20002, "BAW2"}};
    dispatch(SimMessageId::Exception, {22, 18, 1});
    const auto posted = messages();
    ASSERT_EQ(1U, posted.size());
    EXPECT_EQ(SimMessageKind::CreationRefused, posted[0].kind);
    EXPECT_EQ(20002U, posted[0].a);
    EXPECT_EQ(1U, pendingCreates.size());
    EXPECT_THROW(dispatch(SimMessageId::Exception, {5, 1, 3}), UserErrorException);
}

TEST_F(ClientTest, survivesMessagesCutAnywhere)
{
    for (uint32_t id = 0; id < 100; ++id) {
        for (const uint32_t request : {kReqTitle, kReqModel, kReqStaticData, kReqUser, kReqAircraftInRange}) {
            const auto message = data(static_cast<SimMessageId>(id), request, 50).finish();
            for (size_t length = 12; length < message.size(); ++length) {
                const std::vector<std::byte> cut(message.begin(),
                                                 message.begin() + static_cast<std::ptrdiff_t>(length));
                try {
                    gf_dispatchMessage(cut);
                } catch (const UserErrorException&) {
                    // What the user must read is a message too.
                }
            }
        }
    }
    EXPECT_TRUE(messages().empty());
}

TEST_F(ClientTest, theUsersOwnObjectIsNeverRemoved)
{
    connect();
    userObjectId = 7;
    queueRemove(7);
    queueRemove(3);
    gf_onFrame();
    EXPECT_TRUE(removeQueue.empty());
    EXPECT_TRUE(simulator.complaints().empty());
}

TEST_F(ClientTest, aFailedRequestRestartsTheRunAndEmptiesTheQueues)
{
    queueEvent(50, GEAR_SET, 1);
    raiseRequestError();
    EXPECT_EQ(ExitReason::SimConnectError, exitReason);
    EXPECT_EQ(9, restartDelaySeconds);
    gf_onFrame();
    EXPECT_TRUE(eventQueue.empty());
}

TEST_F(ClientTest, theUsersAircraftIsDeducedFromItsTexts)
{
    const double a320 = dbase.halfWingspans.at("A320");
    const struct {
        const char* title;
        const char* model;
        double halfSpan;
    } cases[] = {
        {"Some title", "A320", a320},
        {"Aerosoft A320 professional", "AIRBUS A320", a320},
        {"Some title", "AIRBUS A320", dbase.largestHalfWingspan},
        {"Some title", "ZZZ9", dbase.largestHalfWingspan},
    };
    for (const auto& c : cases) {
        gf_onUserTitle(c.title);
        gf_onUserModel(c.model);
        EXPECT_DOUBLE_EQ(c.halfSpan, userHalfSpan) << c.title << " " << c.model;
    }
    EXPECT_THROW(gf_onUserModel(""), UserErrorException);
    EXPECT_THROW(gf_onUserModel(std::nullopt), UserErrorException);
    gf_onUserTitle(std::string(60, 'x'));
    EXPECT_EQ(std::string(48, 'x'), display.user.title.load());
    gf_onUserTitle(std::string(47, 'x') + "\xC3\xBC");
    EXPECT_EQ(std::string(47, 'x'), display.user.title.load()) << "no half character";
}

TEST_F(ClientTest, findsTheInstalledSimulator)
{
    const TempFolder folder;
    const ScopedVariable appData("VELATRA_APPDATA", folder.path().string());
    const std::string key = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v";
    const std::string five = key + "5]\nSetupPath=D:\\P3D\n";
    const std::string six = key + "6]\nSetupPath=E:\\P3D6\n";
    const struct {
        std::string registry;
        const char* lfolder;
        const char* path;  // nullptr: an error for the user
    } cases[] = {
        {five + six, "", nullptr}, {"", "", nullptr},     {"", "D:\\AI", ""},
        {five, "", "D:\\P3D"},     {six, "", "E:\\P3D6"}, {key + "5]\n", "", nullptr},
    };
    for (const auto& c : cases) {
        folder.write("registry.ini", c.registry);
        SIM_INSTALL_PATH.value = "";
        ALL_INSTALL_PATH.value = "";
        lfolders[2].value = c.lfolder;
        if (c.path == nullptr) {
            EXPECT_THROW(gf_detectSimulator(), UserErrorException) << c.registry;
        } else {
            gf_detectSimulator();
            EXPECT_EQ(c.path, SIM_INSTALL_PATH.value) << c.registry;
            EXPECT_EQ(c.path, ALL_INSTALL_PATH.value) << c.registry;
        }
    }
    lfolders[2].value = "";
}

}  // namespace vlt
