#include "sim/client.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/locks.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "link/position_server.h"
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
#include "traffic/sim_answers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace vlt {

using Message = std::vector<std::byte>;

// --- messages of the simulator

// One of whole numbers alone.
static Message lf_words(SimMessageId id, const std::vector<uint32_t>& words)
{
    PacketWriter w(id);
    for (const uint32_t word : words) {
        w.u32(word);
    }
    return w.finish();
}

static Message lf_event(uint32_t id, uint32_t data = 0)
{
    return lf_words(SimMessageId::Event, {0, id, data});
}

static Message lf_added(uint32_t object, uint32_t type = kSimObjectTypeAircraft)
{
    return lf_words(SimMessageId::ObjectAddRemove, {0, kEventObjectAdded, object, type});
}

static PacketWriter lf_data(SimMessageId id, uint32_t request, uint32_t object)
{
    PacketWriter w(id);
    w.u32(request).u32(object).u32(0).u32(0).u32(1).u32(1).u32(1);
    return w;
}

static Message lf_user(double lat, double knots = 120, double agl = 0)
{
    auto w = lf_data(SimMessageId::ObjectData, kReqUser, 7);
    for (const double value : {lat, 8.0, 0.0, 0.0, 1.0, 5000.0, agl, knots}) {
        w.f64(value);
    }
    return w.i64(0).i64(1).i64(2026).i64(0).finish();
}

static Message lf_aircraft(uint32_t object, const char* atcId, bool onGround = false, double agl = 500)
{
    auto w = lf_data(SimMessageId::ObjectDataByType, kReqAircraftInRange, object);
    return w.f64(agl).f64(1400).i64(onGround ? 1 : 0).text(atcId, 32).finish();
}

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
    // What the messages have made the client do, as words.
    static std::string told(const std::vector<Message>& messages)
    {
        gf_freshRun();
        pendingCreates = {{17, 20001, "BAW1"}, {18, 20002, "BAW1"}, {19, 9, "KLM2*"}};
        std::string told;
        try {
            std::ranges::for_each(messages, gf_dispatchMessage);
        } catch (const UserErrorException&) {
            told += "error ";
        }
        told += simRunning ? "runs " : "";
        told += simHasQuit ? "quit " : "";
        told += secondDue ? "second " : "";
        told += userOnGroundKnown ? userOnGround ? "ground " : "air " : "";
        told += userHalfSpan > 0 ? display.user.title.load() + display.user.model.load() + " " : "";
        told += noteStandRequested ? "note " : "";
        const int32_t delay = restartDelaySeconds;
        told += exitReason == ExitReason::NewFlight ? format("new flight in {} s ", delay) : "";
        told += stopRequested == (exitReason == ExitReason::NewFlight) ? "" : "other stop ";
        constexpr const char* kKinds[] = {"live", "static", "removed", "data", "static data", "refused"};
        const std::scoped_lock lock(messageMutex);
        for (const SimMessage& m : std::exchange(simMessages, {})) {
            told +=
                format("{}({} {} {:g} {:g}) ", kKinds[static_cast<int>(m.kind)], m.objectid, m.a, m.x, m.y);
        }
        for (const QueuedEvent& e : eventQueue) {
            told += format("{} = {} of {} ", e.event, e.value, e.objectid);
        }
        return told;
    }

    VirtualSimulator simulator{SimulatorOptions{}};
};

TEST_F(ClientTest, eachMessageHasItsEffect)
{
    const Message removed = lf_words(SimMessageId::ObjectAddRemove, {0, kEventObjectRemoved, 50, 2});
    const Message sim = lf_event(kEventSim, 1);
    const Message newFile = lf_words(SimMessageId::FileName, {});
    const Message onGround = lf_data(SimMessageId::ObjectData, kReqUserOnGround, 7).i64(1).finish();
    const Message inTheAir = lf_data(SimMessageId::ObjectData, kReqUserOnGround, 7).i64(0).finish();
    const Message model = lf_data(SimMessageId::ObjectData, kReqModel, 7).text("A320", 32).finish();
    const Message title = lf_data(SimMessageId::ObjectData, kReqTitle, 7).textV("My ").finish();
    const Message flight = lf_event(kEventFlightLoaded);
    const std::string live = "live(50 20001 0 500) 215 = 1 of 50 216 = 1 of 50 217 = 1 of 50 ";
    const std::string frozen = "215 = 1 of 52 216 = 1 of 52 217 = 1 of 52 ";
    const struct {
        const char* what;
        std::vector<Message> messages;
        std::string expected;
    } cases[] = {
        // clang-format off
        {"the flight runs",        {sim}, "runs "},
        {"and pauses",             {sim, lf_event(kEventSim, 0)}, ""},
        {"the simulator goes",     {sim, lf_words(SimMessageId::Quit, {})}, "quit "},
        {"a new position",         {lf_event(kEventPositionChanged)}, "new flight in 30 s "},
        {"from a stand",           {lf_user(47, 2), onGround, flight}, "second ground note new flight in 30 s "},
        {"the same by file",       {lf_user(47, 2), onGround, newFile}, "second ground note new flight in 30 s "},
        {"while rolling",          {lf_user(47, 2.1), onGround, flight}, "second ground new flight in 30 s "},
        {"a jump of 10.8 nm",      {lf_user(47), lf_user(47.18)}, "new flight in 30 s "},
        {"9.6 nm are none",        {lf_user(47), lf_user(47.16)}, ""},
        {"on ground, but where?",  {onGround}, "second "},
        {"not on the ground",      {lf_user(47), inTheAir}, "second air "},
        {"the first of one tail",  {lf_added(50), lf_aircraft(50, "BAW1")}, live},
        {"parked",                 {lf_added(52), lf_aircraft(52, "KLM2*")}, "static(52 9 0 0) " + frozen},
        {"a stranger",             {lf_added(53), lf_aircraft(53, "STRANGER")}, ""},
        {"announced as a boat",    {lf_added(50, 3), lf_aircraft(50, "BAW1", true)}, "data(50 1 1400 500) "},
        {"removed before seen",    {lf_added(50), removed, lf_aircraft(50, "BAW1")},
                                   "removed(50 0 0 0) data(50 0 1400 500) "},
        {"low",                    {lf_aircraft(50, "BAW1", true, 2500)}, "data(50 1 1400 2500) "},
        {"high",                   {lf_aircraft(50, "BAW1", true, 2501)}, ""},
        {"static",                 {lf_aircraft(50, "BAW1*", true, 0)}, ""},
        {"nameless",               {lf_aircraft(50, "", true, 0)}, ""},
        {"the user's own",         {lf_aircraft(2, "BAW1", true, 0)}, ""},
        {"the user's, by report",  {lf_user(47), lf_aircraft(7, "BAW1", true, 0)}, ""},
        {"not finite",             {lf_aircraft(50, "BAW1", true, NAN)}, ""},
        {"the user's type",        {title, model}, "My A320 "},
        {"no aircraft",            {lf_data(SimMessageId::ObjectData, kReqModel, 7).finish()}, "error "},
        {"creation refused",       {lf_words(SimMessageId::Exception, {22, 18, 1})}, "refused(0 20002 0 0) "},
        {"of nobody",              {lf_words(SimMessageId::Exception, {22, 20, 1})}, ""},
        {"other protocol",         {lf_words(SimMessageId::Exception, {5, 1, 3})}, "error "},
        {"too many objects",       {lf_words(SimMessageId::Exception, {11, 18, 1})}, ""},
        // clang-format on
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, told(c.messages)) << c.what;
        const Message& last = c.messages.back();
        for (auto end = last.begin() + kServerHeaderSize; end != last.end() && c.messages.size() == 1;
             ++end) {
            EXPECT_EQ("", told({Message(last.begin(), end)})) << c.what << ", cut";
        }
    }
}

TEST_F(ClientTest, theUsersStateGoesOnToRealTrafficFieldByField)
{
    auto w = lf_data(SimMessageId::ObjectData, kReqUser, 7);
    for (const double value : {47.5, -8.25, 0.1, -0.2, 3.1, 5000.25, 12.0, 140.5}) {
        w.f64(value);
    }
    told({w.i64(45296).i64(60).i64(2024).i64(0x11).finish()});
    const UserAc user = gf_userRaw();
    EXPECT_EQ("Qs121=10000;-20000;3.100000;5000250;140500;0.829031;-0.143990\r\n", gf_positionText(user));
    EXPECT_EQ(1709210096, gf_simTime(user)) << "29 February 2024, 12:34:56";
    EXPECT_EQ(12, user.agl);
}

TEST_F(ClientTest, keepsTheUsersLatestFiniteDataAndEachThirtiethFrameRate)
{
    told({lf_user(47, 120, -3), lf_user(NAN)});
    EXPECT_EQ(47, gf_userRaw().lat);
    EXPECT_EQ(0, gf_userRaw().agl) << "not below the ground";
    EXPECT_EQ(7U, userObjectId);
    const Message frame = PacketWriter(SimMessageId::Frame).u32(0).u32(0).u32(0).f32(26).finish();
    told(std::vector<Message>(29, frame));
    EXPECT_EQ(0, frameRate);
    gf_dispatchMessage(frame);
    EXPECT_EQ(26, frameRate);
}

TEST_F(ClientTest, waitsForAndConnectsOnlyToTheWantedSimulator)
{
    const struct {
        const char *name, *path;
        int wanted;
        const char* waitsFor;
        bool accepted;
    } cases[] = {
        {"Lockheed Martin Prepar3D v5", "C:\\P3D", 5, "5", true},
        {"Lockheed Martin Prepar3D v5", "C:\\P3D", 6, "5", false},
        {"Lockheed Martin Prepar3D v6", "C:\\Prepar3D V6", 5, "6", true},
        {"Lockheed Martin Prepar3D v6", "D:\\P3DV5\\v6", 6, "5", true},
        {"Lockheed Martin Prepar3D v4", "C:\\Prepar3D v5", 5, "5", false},
        {"KittyHawk", "C:\\Prepar3D v5", 5, "5", false},
        {"SunRise", "C:\\Prepar3D v5", 5, "5", false},
        {"Lockheed Martin\xAE Prepar3D\xAE v5", "C:\\Prepar3D v5", 6, "5", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(format("{} in {}", c.name, c.path));
        SIM_INSTALL_PATH.value = c.path;
        wantedSimVersion = c.wanted;
        EXPECT_EQ(c.waitsFor, gf_expectedSimVersion());
        PacketWriter w(SimMessageId::Open);
        w.text(c.name, 256);
        for (const uint32_t number : {5, 4, 9, 1, 5, 4, 0, 0, 0, 0}) {
            w.u32(number);
        }
        bool accepted = true;
        try {
            gf_dispatchMessage(w.finish());
        } catch (const UserErrorException&) {
            accepted = false;
        }
        EXPECT_EQ(c.accepted, accepted);
        EXPECT_TRUE(simHasOpened);
    }
    EXPECT_EQ("Lockheed Martin Prepar3D v5 (5.4.9.1)", display.sim.name.load());
    SIM_INSTALL_PATH.value = "D:\\P3D";
    P3D_VERSION.value = 4;
    EXPECT_THROW(gf_expectedSimVersion(), UserErrorException);
}

TEST_F(ClientTest, anErrorForTheUserEndsTheConversationAndStaysReadable)
{
    gf_setDirectSimulator(&simulator);
    SIM_INSTALL_PATH.value = "D:\\v6";
    wantedSimVersion = 6;
    gf_noteSimRunning(true);
    gf_startSimClientThread().join();
    EXPECT_NE("", display.error.load());
    EXPECT_FALSE(simRunning || display.sim.running || display.sim.connected || stopRequested);
    EXPECT_EQ(nullptr, simHandle);
}

TEST_F(ClientTest, whatIsAskedAndQueuedReachesTheSimulatorOnceThereIsOne)
{
    const auto ask = [] {
        return gf_requestUserOnGround() && gf_requestUserTitleAndModel() && gf_requestAircraftInRange(1000) &&
               requestUserPosition().lat == 0 && !simRequestFailed;
    };
    EXPECT_TRUE(ask()) << "of nobody nothing is asked";
    EXPECT_FALSE(gf_openSim());
    gf_setDirectSimulator(&simulator);
    ASSERT_TRUE(gf_openSim());
    EXPECT_TRUE(ask());
    userObjectId = 7;
    for (const uint32_t object : {7, 3}) {  // neither the user's nor below it
        queueRemove(object);
        sendBuffer.push_back({.objectid = object});
    }
    gf_onFrame();
    EXPECT_TRUE(removeQueue.empty() && sendBuffer.empty());
    EXPECT_TRUE(simulator.complaints().empty());
    queueEvent(16, FLAPS_SET, 1);
    gf_onFrame();
    auto packets = simulator.counts().packets;
    EXPECT_EQ(4U, packets[static_cast<uint32_t>(SimFunction::RequestDataOnSimObject)]);
    EXPECT_EQ(1U, packets[static_cast<uint32_t>(SimFunction::RequestDataOnSimObjectType)]);
    EXPECT_EQ(2U, packets[static_cast<uint32_t>(SimFunction::AIReleaseControl)]) << "before and after flaps";
    queueEvent(50, GEAR_SET, 1);
    gf_dispatchMessage(lf_words(SimMessageId::Quit, {}));
    raiseRequestError();
    EXPECT_FALSE(stopRequested || simRequestFailed) << "who has said goodbye need not answer";
    gf_beginConversation();
    const std::string title(kSimNameWidth, 'x');
    CreateRequest tooLong;
    tooLong.title = title;
    queueCreate(tooLong);
    gf_onFrame();
    queueEvent(50, GEAR_SET, 1);
    EXPECT_EQ(ExitReason::SimConnectError, exitReason);
    EXPECT_EQ(9, restartDelaySeconds);
    gf_onFrame();
    EXPECT_TRUE(eventQueue.empty());
}

TEST_F(ClientTest, nothingOfARunIsLeftForTheNext)
{
    queueEvent(50, GEAR_SET, 1);
    queueCreate({});
    queueRemove(50);
    sendBuffer.push_back({});
    pendingCreates = {{17, 20001, "BAW1"}};
    userObjectId = 9;
    gf_onUserTitle("Some title");
    gf_onUserModel("A320");
    EXPECT_LT(0, userHalfSpan);
    gf_mustSend(true, "");
    EXPECT_FALSE(simRequestFailed);
    gf_mustSend(false, "nothing was sent");
    EXPECT_TRUE(simRequestFailed);
    EXPECT_EQ(ExitReason::SimConnectError, exitReason);
    gf_freshRun();
    EXPECT_TRUE(eventQueue.empty() && createQueue.empty() && removeQueue.empty() && sendBuffer.empty() &&
                pendingCreates.empty());
    EXPECT_EQ(kFirstUserObject, userObjectId);
    gf_onUserTitle("Some title");
    EXPECT_EQ(0, userHalfSpan) << "of the model nothing is known any more";
}

TEST_F(ClientTest, aNewLiveObjectsLightsAreToggledTwice)
{
    gf_setDirectSimulator(&simulator);
    ASSERT_TRUE(gf_openSim());
    const auto sent = [this] {
        auto packets = simulator.counts().packets;
        return packets[static_cast<uint32_t>(SimFunction::TransmitClientEvent)];
    };
    for (const SimMessageKind kind : {SimMessageKind::StaticObject, SimMessageKind::LiveObject}) {
        const auto before = sent();
        ackWait.assign(1, {77, 20001, 0, kind, 0, 0});
        for (int i = 0; i < 200; ++i) {
            gf_stepAckWaits();
        }
        EXPECT_EQ(kind == SimMessageKind::LiveObject ? 2U : 0U, sent() - before);
    }
}

TEST_F(ClientTest, theUsersAircraftIsDeducedFromItsTexts)
{
    const double a320 = dbase.halfWingspans.at("A320");
    dbase.halfWingspans["ZERO"] = 0;
    const struct {
        const char* title;
        const char* model;
        double halfSpan;
    } cases[] = {
        {"Some title", "A320", a320},
        {"Aerosoft A320 professional", "AIRBUS A320", a320},
        {"Some title", "AIRBUS A320", dbase.largestHalfWingspan},
        {"Some title", "ZZZ9", dbase.largestHalfWingspan},
        {"Some title", "ZERO", dbase.largestHalfWingspan},
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
        std::string registry, lfolder, path;
    } cases[] = {
        {five + six, "", "error"}, {"", "", "error"},     {"", "D:\\AI", ""},
        {five, "", "D:\\P3D"},     {six, "", "E:\\P3D6"}, {key + "5]\n", "", "error"},
    };
    for (const auto& c : cases) {
        folder.write("registry.ini", c.registry);
        SIM_INSTALL_PATH.value = "";
        ALL_INSTALL_PATH.value = "";
        lfolders[2].value = c.lfolder;
        std::string path;
        try {
            gf_detectSimulator();
            path = SIM_INSTALL_PATH.value;
            EXPECT_EQ(path, ALL_INSTALL_PATH.value.load());
        } catch (const UserErrorException&) {
            path = "error";
        }
        EXPECT_EQ(c.path, path) << c.registry;
    }
}

}  // namespace vlt
