#include "standin/virtual_simulator.h"

#include "test_client.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

namespace vlt {

constexpr double kCgFt = 9;

static SimulatorOptions lf_options()
{
    SimulatorOptions options;
    options.terrain = {1000, 0, 47.6};
    options.titles = {{"House A320", "A320", "Large", kCgFt, 0.5 * kRadPerDeg}};
    return options;
}

class VirtualSimulatorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(kSimOk, client.opened);
        client.define();
    }

    std::string reasonOf(size_t n)
    {
        const auto complaints = simulator.complaints();
        return n < complaints.size() ? complaints[n].reason : "(none)";
    }

    VirtualSimulator simulator{lf_options()};
    TestClient client{simulator};
    SimInitialPosition airborne{47.6, 11.6, 6000, 0, 0, 90, 0, 0};
    SimInitialPosition parked{47.61, 11.5, 0, 0, 0, 180, 1, 0};
};

TEST_F(VirtualSimulatorTest, findsNothingWrongWithACorrectLife)
{
    const uint32_t id = client.create("House A320", "DLH123", airborne);
    ASSERT_GT(id, kVirtualUserId);
    client.freeze(id);
    client.wait(0.1);
    client.setPosition(id, {47.6, 11.601, -0.05, 0, 1.57, 6000, 0, 250});
    client.wait(1);
    SimConnect_AIRemoveObject(client.handle, id, 105);
    client.wait(0.1);
    EXPECT_EQ(0u, simulator.counts().complaints) << reasonOf(0);
    EXPECT_FALSE(simulator.object(id).has_value());
    const std::vector<ObjectLife> lives = simulator.lives();
    ASSERT_EQ(1u, lives.size());
    EXPECT_EQ("DLH123", lives[0].tailNumber);
    EXPECT_LE(lives[0].createdAt, lives[0].frozenAt);
    EXPECT_LT(lives[0].frozenAt, lives[0].firstPositionAt);
    EXPECT_LT(lives[0].firstPositionAt, lives[0].removedAt);
}

TEST_F(VirtualSimulatorTest, announcesAnObjectWithTheNextFrameAndItsRemoval)
{
    SimConnect_AICreateNonATCAircraft(client.handle, "House A320", "DLH123", airborne, 0);
    client.poll();
    EXPECT_TRUE(client.taken(SimMessageId::ObjectAddRemove).empty());
    client.wait(1.0 / kFramesPerSecond + 1e-6);
    ASSERT_EQ(1u, client.taken(SimMessageId::ObjectAddRemove).size());
    const TestMessage added = client.taken(SimMessageId::ObjectAddRemove)[0];
    EXPECT_EQ(kTestAdded, added.word(1));
    EXPECT_EQ(kSimObjectTypeAircraft, added.word(3));
    SimConnect_AIRemoveObject(client.handle, added.word(2), 105);
    client.messages.clear();
    client.wait(0.1);
    ASSERT_EQ(1u, client.taken(SimMessageId::ObjectAddRemove).size());
    const TestMessage removed = client.taken(SimMessageId::ObjectAddRemove)[0];
    EXPECT_EQ(kTestRemoved, removed.word(1));
    EXPECT_EQ(added.word(2), removed.word(2));
}

TEST_F(VirtualSimulatorTest, refusesATitleItDoesNotHaveNamingThePacket)
{
    EXPECT_EQ(0u, client.create("Nobody's B744", "DLH1", airborne));
    uint32_t sendId = 0;
    SimConnect_GetLastSentPacketID(client.handle, &sendId);
    const auto exceptions = client.taken(SimMessageId::Exception);
    ASSERT_EQ(1u, exceptions.size());
    EXPECT_EQ(22u, exceptions[0].word(0));
    EXPECT_EQ(sendId, exceptions[0].word(1));
    EXPECT_EQ(0u, simulator.counts().complaints) << "a refusal is no fault of the client";
}

TEST_F(VirtualSimulatorTest, holdsAThousandObjectsWithTheUsers)
{
    for (int i = 0; i < 999; ++i) {
        SimConnect_AICreateNonATCAircraft(client.handle, "House A320", "N" + std::to_string(i), airborne, 0);
    }
    client.wait(0.1);
    EXPECT_EQ(999u, simulator.objects().size());
    client.messages.clear();
    EXPECT_EQ(0u, client.create("House A320", "N999", airborne));
    const auto exceptions = client.taken(SimMessageId::Exception);
    ASSERT_EQ(1u, exceptions.size());
    EXPECT_EQ(11u, exceptions[0].word(0));
}

TEST_F(VirtualSimulatorTest, letsWhatIsNotFrozenFall)
{
    const uint32_t loose = client.create("House A320", "LOOSE", airborne);
    const uint32_t held = client.create("House A320", "HELD", airborne);
    client.freeze(held);
    const double heldAt = simulator.object(held)->altitude;
    client.wait(5);
    // Free fall from rest, 0.5 g t squared, for 5.1 to 5.2 s; at most 200 ft/s.
    const double fallen = airborne.altitude - simulator.object(loose)->altitude;
    EXPECT_GT(fallen, 0.5 * 32.2 * 5.05 * 5.05);
    EXPECT_LT(fallen, 0.5 * 32.2 * 5.25 * 5.25);
    EXPECT_GT(distNm({47.6, 11.6}, {simulator.object(loose)->lat, simulator.object(loose)->lon}), 0.05);
    EXPECT_DOUBLE_EQ(heldAt, simulator.object(held)->altitude);
    client.wait(120);
    EXPECT_NEAR(1000 + kCgFt, simulator.object(loose)->altitude, 0.01) << "the ground stops the fall";
}

TEST_F(VirtualSimulatorTest, standsAnObjectOnTheGroundByItsCentreOfGravity)
{
    const uint32_t id = client.create("House A320", "DLH9", parked);
    const auto object = simulator.object(id);
    ASSERT_TRUE(object.has_value());
    EXPECT_NEAR(1009, object->altitude, 1e-6);
    EXPECT_NEAR(0.5 * std::acos(-1) / 180, object->pitch, 1e-9);
    client.messages.clear();
    SimConnect_RequestDataOnSimObjectType(client.handle, 101, kTestNearby, 20000, kSimObjectTypeAircraft);
    client.poll();
    const auto replies = client.taken(SimMessageId::ObjectDataByType);
    ASSERT_EQ(2u, replies.size()) << "the user's aircraft and this one";
    PacketReader reader(replies[1].bytes);
    reader.skip(kServerHeaderSize);
    EXPECT_EQ(101u, reader.u32());
    EXPECT_EQ(id, reader.u32());
    EXPECT_EQ(kTestNearby, reader.u32());
    EXPECT_EQ(0u, reader.u32());
    EXPECT_EQ(2u, reader.u32()) << "entry number";
    EXPECT_EQ(2u, reader.u32()) << "out of";
    EXPECT_EQ(3u, reader.u32()) << "values in the definition";
    EXPECT_NEAR(kCgFt, reader.f64(), 1e-6);
    EXPECT_EQ(1, reader.i64());
    EXPECT_EQ("DLH9", reader.text(32));
    EXPECT_EQ(0u, reader.remaining());
}

TEST_F(VirtualSimulatorTest, answersByTypeForTheRadiusOnly)
{
    // One degree of latitude is 60 nm, 111 km.
    client.create("House A320", "NEAR", {47.69, 11.5, 5000, 0, 0, 0, 0, 0});
    client.create("House A320", "FAR", {47.71, 11.5, 5000, 0, 0, 0, 0, 0});
    client.messages.clear();
    SimConnect_RequestDataOnSimObjectType(client.handle, 101, kTestNearby, 11000, kSimObjectTypeAircraft);
    client.poll();
    EXPECT_EQ(2u, client.taken(SimMessageId::ObjectDataByType).size());
}

TEST_F(VirtualSimulatorTest, tellsTheStateOfTheFlightAtOnceAndWhenItChanges)
{
    client.poll();
    auto events = client.taken(SimMessageId::Event);
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(kTestSubscribedSim, events[0].word(1));
    EXPECT_EQ(1u, events[0].word(2));
    client.messages.clear();
    simulator.setRunning(false);
    simulator.setRunning(false);
    client.poll();
    events = client.taken(SimMessageId::Event);
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(0u, events[0].word(2));
}

TEST_F(VirtualSimulatorTest, sendsPeriodicDataOnceASecond)
{
    SimConnect_RequestDataOnSimObject(client.handle, 108, kTestNearby, kSimUserObject, kSimPeriodSecond);
    client.messages.clear();
    client.wait(10);
    EXPECT_NEAR(10.0, static_cast<double>(client.taken(SimMessageId::ObjectData).size()), 1.0);
}

TEST_F(VirtualSimulatorTest, movesTheUserAlongTheHeading)
{
    UserState user;
    user.heading = std::acos(-1) / 2;  // east
    user.speed = 120;
    user.altitude = 5000;
    user.onGround = false;
    simulator.setUser(user);
    client.wait(60);
    const UserState now = simulator.user();
    // 2 nm to the east; at 47.6 degrees a degree of longitude has 60 * cos(47.6) nm.
    EXPECT_NEAR(11.5 + 2 / (60 * std::cos(47.6 * std::acos(-1) / 180)), now.lon, 0.001);
    EXPECT_NEAR(47.6, now.lat, 0.001);
}

TEST_F(VirtualSimulatorTest, dropsTheClientsObjectsWithTheClient)
{
    const uint32_t own = client.create("House A320", "OWN", airborne);
    const uint32_t foreign = simulator.addForeignAircraft("Somebody's C172", "OTHER", parked);
    client.wait(0.1);
    SimConnect_Close(client.handle);
    client.handle = nullptr;
    EXPECT_FALSE(simulator.object(own).has_value());
    EXPECT_TRUE(simulator.object(foreign).has_value());
}

TEST_F(VirtualSimulatorTest, saysNothingToAClientThatHasNotAskedForFrames)
{
    client.messages.clear();
    client.wait(1);
    EXPECT_TRUE(client.taken(SimMessageId::Frame).empty());
    SimConnect_SubscribeToSystemEvent(client.handle, 204, "Frame");
    client.wait(1);
    EXPECT_NEAR(30, static_cast<int>(client.taken(SimMessageId::Frame).size()), 1);
}

// What the simulator must notice. Each case does one wrong thing to a good object.
TEST_F(VirtualSimulatorTest, listsWhatTheClientDoesWrong)
{
    const uint32_t good = client.create("House A320", "GOOD", airborne);
    client.freeze(good);
    const uint32_t unfrozen = client.create("House A320", "BAD1", airborne);
    SimConnect_AIReleaseControl(client.handle, unfrozen, 103);
    const uint32_t unreleased = client.create("House A320", "BAD2", airborne);
    for (const uint32_t event : kTestFreezes) {
        SimConnect_TransmitClientEvent(client.handle, unreleased, event, 1, 301, 0);
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        const char* reason;  // a part of it
        std::function<void()> act;
    } cases[] = {
        {"no freezes", "without its three freezes",
         [&] {
             client.setPosition(unfrozen, {47, 11, 0, 0, 1, 5000, 0, 200});
         }},
        {"no release", "while the AI has control",
         [&] {
             client.setPosition(unreleased, {47, 11, 0, 0, 1, 5000, 0, 200});
         }},
        {"NaN", "isn't finite",
         [&] {
             client.setPosition(good, {47, nan, 0, 0, 1, 5000, 0, 200});
         }},
        {"latitude", "latitude 91",
         [&] {
             client.setPosition(good, {91, 11, 0, 0, 1, 5000, 0, 200});
         }},
        {"pitch in degrees", "pitch",
         [&] {
             client.setPosition(good, {47, 11, 3, 0, 1, 5000, 0, 200});
         }},
        {"unknown object", "unknown object 4711",
         [&] {
             client.setPosition(4711, {47, 11, 0, 0, 1, 5000, 0, 200});
         }},
        {"user's aircraft", "user's aircraft",
         [&] {
             client.setPosition(kVirtualUserId, {47, 11, 0, 0, 1, 5000, 0, 200});
         }},
        {"short data", "shorter",
         [&] {
             const double two[] = {47, 11};
             SimConnect_SetDataOnSimObject(client.handle, kTestPosition, good, std::as_bytes(std::span(two)));
         }},
        {"undefined", "definition 499", [&] { SimConnect_SetDataOnSimObject(client.handle, 499, good, {}); }},
        {"unmapped event", "isn't mapped",
         [&] { SimConnect_TransmitClientEvent(client.handle, good, 999, 1, 301, 0); }},
        {"no such event", "NO_SUCH",
         [&] { SimConnect_MapClientEventToSimEvent(client.handle, 500, "NO_SUCH_EVENT"); }},
        {"no such variable", "Plane Attitude",
         [&] {
             SimConnect_AddToDataDefinition(client.handle, 410, "Plane Attitude", "feet",
                                            SimDataType::Float64);
         }},
        {"wrong unit", "furlongs",
         [&] {
             SimConnect_AddToDataDefinition(client.handle, 410, "Plane Altitude", "furlongs",
                                            SimDataType::Float64);
         }},
        {"removal of nothing", "removal of unknown",
         [&] { SimConnect_AIRemoveObject(client.handle, 4711, 105); }},
        {"release of nothing", "release of unknown",
         [&] { SimConnect_AIReleaseControl(client.handle, 4711, 103); }},
        {"no tail number", "without a tail number",
         [&] { SimConnect_AICreateNonATCAircraft(client.handle, "House A320", "", airborne, 0); }},
        {"no flight plan", "no flight plan file",
         [&] { SimConnect_AISetAircraftFlightPlan(client.handle, good, "/no/such/file.pln", 110); }},
    };
    for (const auto& c : cases) {
        const uint64_t before = simulator.counts().complaints;
        c.act();
        ASSERT_EQ(before + 1, simulator.counts().complaints) << c.what;
        EXPECT_NE(std::string::npos, reasonOf(before).find(c.reason)) << c.what << ": " << reasonOf(before);
    }
    EXPECT_NEAR(47.6, simulator.object(good)->lat, 1e-4) << "nothing wrong was carried out";
}

TEST_F(VirtualSimulatorTest, givesControlBackToTheAiWithTheFlaps)
{
    const uint32_t id = client.create("House A320", "DLH1", airborne);
    client.freeze(id);
    SimConnect_TransmitClientEvent(client.handle, id, kTestFlaps, 3072, 301, 0);
    client.setPosition(id, {47.6, 11.6, 0, 0, 1, 6000, 0, 200});
    EXPECT_EQ(1u, simulator.counts().complaints);
    SimConnect_AIReleaseControl(client.handle, id, 103);
    client.setPosition(id, {47.6, 11.6, 0, 0, 1, 6000, 0, 200});
    EXPECT_EQ(1u, simulator.counts().complaints);
}

TEST_F(VirtualSimulatorTest, takesAFlightPlanThatIsThere)
{
    const uint32_t id = client.create("House A320", "DLH1", airborne);
    const auto file = std::filesystem::temp_directory_path() / "velatra_standin_test.pln";
    std::ofstream(file) << "plan";
    SimConnect_AISetAircraftFlightPlan(client.handle, id, file.string(), 110);
    EXPECT_EQ(0u, simulator.counts().complaints) << reasonOf(0);
    std::filesystem::remove(file);
}

TEST_F(VirtualSimulatorTest, noticesAJumpThatTheSpeedDoesNotExplain)
{
    const uint32_t id = client.create("House A320", "DLH1", airborne);
    client.freeze(id);
    const double knots = 240;  // 405 ft/s
    for (int i = 0; i < 60; ++i) {
        client.setPosition(id, {47.6 + i * knots / 3600 / 60 * 0.1, 11.6, 0, 0, 0, 6000, 0, knots});
        client.wait(0.1);
    }
    EXPECT_EQ(0, simulator.lives()[0].worstStepFeet);
    client.setPosition(id, {47.6 + 0.1, 11.6, 0, 0, 0, 6000, 0, knots});
    EXPECT_GT(simulator.lives()[0].worstStepFeet, 5 * 6076) << "0.1 degrees are 6 nm";
}

TEST(VirtualSimulator, checksHeadersOfRawPackets)
{
    const auto packet = [](uint32_t size, uint32_t version, uint32_t id, uint32_t sendId, size_t bytes) {
        std::vector<std::byte> raw(bytes);
        const uint32_t words[] = {size, version, id, sendId};
        std::memcpy(raw.data(), words, std::min(bytes, sizeof words));
        return raw;
    };
    const struct {
        const char* what;
        std::vector<std::byte> raw;
        const char* reason;
    } cases[] = {
        {"too short", packet(8, 35, 0xF0000005, 1, 8), "8 bytes"},
        {"size field", packet(40, 35, 0xF0000005, 1, 36), "size field 40"},
        {"version", packet(36, 34, 0xF0000005, 1, 36), "version 34"},
        {"function", packet(36, 35, 0xF0000099, 1, 36), "unknown function"},
        {"size of its function", packet(40, 35, 0xF0000005, 1, 40), "40 bytes"},
        {"send id", packet(36, 35, 0xF0000005, 2, 36), "send id 2"},
        {"before Open", packet(24, 35, 0xF000002C, 1, 24), "before Open"},
    };
    for (const auto& c : cases) {
        VirtualSimulator simulator(lf_options());
        simulator.connect();
        simulator.handlePacket(c.raw);
        const auto complaints = simulator.complaints();
        ASSERT_FALSE(complaints.empty()) << c.what;
        EXPECT_NE(std::string::npos, complaints[0].reason.find(c.reason)) << complaints[0].reason;
    }
}

TEST(VirtualSimulator, isNotFoundBeforeItHasStarted)
{
    VirtualSimulator simulator(lf_options());
    simulator.setStarted(false);
    {
        TestClient early(simulator);
        EXPECT_LT(early.opened, 0);
    }
    simulator.setStarted(true);
    TestClient client(simulator);
    EXPECT_EQ(kSimOk, client.opened);
    simulator.setStarted(false);
    EXPECT_LT(client.poll(), 0);
    EXPECT_LT(SimConnect_AIRemoveObject(client.handle, 99, 105), 0);
}

TEST(VirtualSimulator, givesZuluTimeByTheCalendar)
{
    SimulatorOptions options = lf_options();
    options.zuluStart = 1709251199;  // 2024-02-29 23:59:59, day 60 of a leap year
    VirtualSimulator simulator(options);
    TestClient client(simulator);
    SimConnect_AddToDataDefinition(client.handle, 1, "ZULU TIME", "Seconds", SimDataType::Int64);
    SimConnect_AddToDataDefinition(client.handle, 1, "ZULU DAY OF YEAR", "Number", SimDataType::Int64);
    SimConnect_AddToDataDefinition(client.handle, 1, "ZULU YEAR", "Number", SimDataType::Int64);
    const struct {
        double wait;
        int64_t time, day, year;
    } cases[] = {{0, 86399, 60, 2024}, {1, 0, 61, 2024}};
    for (const auto& c : cases) {
        client.wait(c.wait);
        client.messages.clear();
        SimConnect_RequestDataOnSimObject(client.handle, 9, 1, kSimUserObject, kSimPeriodOnce);
        client.poll();
        const auto replies = client.taken(SimMessageId::ObjectData);
        ASSERT_EQ(1u, replies.size());
        PacketReader reader(replies[0].bytes);
        reader.skip(kServerHeaderSize + 7 * 4);
        EXPECT_EQ(c.time, reader.i64());
        EXPECT_EQ(c.day, reader.i64());
        EXPECT_EQ(c.year, reader.i64());
    }
}

}  // namespace vlt
