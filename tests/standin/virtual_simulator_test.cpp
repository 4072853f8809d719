#include "standin/virtual_simulator.h"

#include "support/temp_folder.h"
#include "test_client.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>

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
    uint32_t create(const char* tail)
    {
        return client.create("House A320", tail, airborne);
    }
    uint32_t createFrozen(const char* tail)
    {
        const uint32_t id = create(tail);
        client.freeze(id);
        return id;
    }
    // Carries out what earns one complaint for this reason.
    void expectComplaint(const char* reason, const std::function<void()>& act)
    {
        const size_t before = simulator.complaints().size();
        act();
        const auto complaints = simulator.complaints();
        ASSERT_EQ(before + 1, complaints.size()) << reason;
        EXPECT_NE(std::string::npos, complaints[before].reason.find(reason))
            << reason << ": " << complaints[before].reason;
    }
    void expectNoComplaint()
    {
        EXPECT_EQ(0u, simulator.counts().complaints) << simulator.complaints().at(0).reason;
    }
    // Creates what is refused by this exception.
    void expectRefusal(uint32_t exception, const char* title)
    {
        EXPECT_EQ(0u, client.create(title, "DLH1", airborne));
        uint32_t sendId = 0;
        SimConnect_GetLastSentPacketID(client.handle, &sendId);
        const auto exceptions = client.taken(SimMessageId::Exception);
        ASSERT_EQ(1u, exceptions.size());
        EXPECT_EQ(exception, exceptions[0].word(0));
        EXPECT_EQ(sendId, exceptions[0].word(1));
        expectNoComplaint();  // a refusal is no fault of the client
    }

    VirtualSimulator simulator{lf_options()};
    TestClient client{simulator};
    const SimInitialPosition airborne{47.6, 11.6, 6000, 0, 0, 90, 0, 0};
    const SimInitialPosition parked{47.61, 11.5, 0, 0, 0, 180, 1, 0};
};

TEST_F(VirtualSimulatorTest, findsNothingWrongWithACorrectLife)
{
    const uint32_t id = createFrozen("DLH123");
    ASSERT_GT(id, kVirtualUserId);
    client.wait(0.1);
    client.setPosition(id, {47.6, 11.601, -0.05, 0, 1.57, 6000, 0, 250});
    const TempFolder folder;
    SimConnect_AISetAircraftFlightPlan(client.handle, id, folder.write("a.pln", "plan").string(), 110);
    client.wait(1);
    SimConnect_AIRemoveObject(client.handle, id, 105);
    client.messages.clear();
    client.wait(0.1);
    const auto removed = client.taken(SimMessageId::ObjectAddRemove);
    ASSERT_EQ(1u, removed.size());
    EXPECT_EQ(kEventObjectRemoved, removed[0].word(1));
    EXPECT_EQ(id, removed[0].word(2));
    expectNoComplaint();
    EXPECT_FALSE(simulator.object(id).has_value());
    const ObjectLife life = simulator.lives().at(0);
    EXPECT_EQ("DLH123", life.tailNumber);
    EXPECT_TRUE(life.createdAt <= life.frozenAt && life.frozenAt < life.firstPositionAt);
    EXPECT_LT(life.firstPositionAt, life.removedAt);
}

TEST_F(VirtualSimulatorTest, refusesUnknownTitlesAndMoreThanAThousandObjectsNamingThePacket)
{
    expectRefusal(22, "Nobody's B744");
    for (int i = 0; i < 999; ++i) {
        SimConnect_AICreateNonATCAircraft(client.handle, "House A320", "N" + std::to_string(i), airborne, 0);
    }
    client.wait(0.1);
    EXPECT_EQ(999u, simulator.objects().size()) << "and the user's";
    expectRefusal(11, "House A320");
}

TEST_F(VirtualSimulatorTest, answersByTypeForTheRadiusOnlyAndDropsObjectsWithTheirClient)
{
    const uint32_t id = client.create("House A320", "DLH9", parked);
    EXPECT_NEAR(0.5 * kRadPerDeg, simulator.object(id)->pitch, 1e-9);
    // One degree of latitude is 60 nm, 111 km.
    client.create("House A320", "FAR", {47.71, 11.5, 5000, 0, 0, 0, 0, 0});
    client.messages.clear();
    SimConnect_RequestDataOnSimObjectType(client.handle, 101, kDefAircraft, 11000, kSimObjectTypeAircraft);
    client.wait(0);
    const auto replies = client.taken(SimMessageId::ObjectDataByType);
    ASSERT_EQ(2u, replies.size()) << "the user's aircraft and this one";
    PacketReader reader(replies[1].bytes);
    reader.skip(kServerHeaderSize);
    // Entry 2 out of 2, four values in the definition.
    for (const uint32_t expected : {101U, id, kDefAircraft, 0U, 2U, 2U, 4U}) {
        EXPECT_EQ(expected, reader.u32());
    }
    EXPECT_NEAR(kCgFt, reader.f64(), 1e-6) << "by its centre of gravity";
    EXPECT_NEAR(1000, reader.f64(), 1e-6);
    EXPECT_EQ(1, reader.i64());
    EXPECT_EQ("DLH9", reader.text(32));
    EXPECT_EQ(0u, reader.remaining());
    const uint32_t foreign = simulator.addForeignAircraft("Somebody's C172", "OTHER", parked);
    client.wait(0.1);
    SimConnect_Close(std::exchange(client.handle, nullptr));
    EXPECT_FALSE(simulator.object(id).has_value());
    EXPECT_TRUE(simulator.object(foreign).has_value());
}

TEST_F(VirtualSimulatorTest, listsPositionsThatCannotBe)
{
    const uint32_t good = createFrozen("GOOD");
    const uint32_t unfrozen = create("BAD1");
    SimConnect_AIReleaseControl(client.handle, unfrozen, 103);
    const uint32_t given = createFrozen("BAD2");
    SimConnect_TransmitClientEvent(client.handle, given, FLAPS_SET, 3072, kEventGroup, 0);
    const struct {
        const char* reason;  // a part of it
        uint32_t object;
        double lat, lon, pitch;
    } cases[] = {
        {"without its three freezes", unfrozen, 47, 11, 0},
        {"while the AI has control", given, 47, 11, 0},  // the flaps have given it back
        {"isn't finite", good, 47, NAN, 0},
        {"latitude 91", good, 91, 11, 0},
        {"pitch", good, 47, 11, 3},  // in degrees
        {"unknown object 4711", 4711, 47, 11, 0},
        {"user's aircraft", kVirtualUserId, 47, 11, 0},
    };
    for (const auto& c : cases) {
        expectComplaint(c.reason, [&] {
            client.setPosition(c.object, {c.lat, c.lon, c.pitch, 0, 1, 5000, 0, 200});
        });
    }
    EXPECT_NEAR(47.6, simulator.object(good)->lat, 1e-4) << "nothing wrong was carried out";
    const uint64_t before = simulator.counts().complaints;
    SimConnect_AIReleaseControl(client.handle, given, 103);
    client.setPosition(given, {47.6, 11.6, 0, 0, 1, 6000, 0, 200});
    EXPECT_EQ(before, simulator.counts().complaints);
}

TEST_F(VirtualSimulatorTest, listsWhatElseTheClientDoesWrong)
{
    const uint32_t good = createFrozen("GOOD");
    const SimHandle h = client.handle;
    const double two[] = {47, 11};
    const auto data = std::as_bytes(std::span(two));
    const auto number = SimDataType::Float64;
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"shorter", [&] { SimConnect_SetDataOnSimObject(h, kDefPosition, good, data); }},
        {"definition 499", [&] { SimConnect_SetDataOnSimObject(h, 499, good, {}); }},
        {"isn't mapped", [&] { SimConnect_TransmitClientEvent(h, good, 999, 1, 301, 0); }},
        {"NO_SUCH", [&] { SimConnect_MapClientEventToSimEvent(h, 500, "NO_SUCH_EVENT"); }},
        {"Plane Attitude", [&] { SimConnect_AddToDataDefinition(h, 410, "Plane Attitude", "feet", number); }},
        {"furlongs", [&] { SimConnect_AddToDataDefinition(h, 410, "Plane Altitude", "furlongs", number); }},
        {"removal of unknown", [&] { SimConnect_AIRemoveObject(h, 4711, 105); }},
        {"release of unknown", [&] { SimConnect_AIReleaseControl(h, 4711, 103); }},
        {"without a tail number", [&] { SimConnect_AICreateNonATCAircraft(h, "House A320", "", {}, 0); }},
        {"no flight plan file", [&] { SimConnect_AISetAircraftFlightPlan(h, good, "/no/such.pln", 110); }},
    };
    for (const auto& [reason, act] : cases) {
        expectComplaint(reason, act);
    }
}

TEST(VirtualSimulator, checksHeadersOfRawPackets)
{
    const struct {
        const char* reason;
        size_t bytes;
        uint32_t header[4];  // size, version, function, send id
    } cases[] = {
        {"8 bytes", 8, {8, 35, 0xF0000005, 1}},      {"size field 40", 36, {40, 35, 0xF0000005, 1}},
        {"version 34", 36, {36, 34, 0xF0000005, 1}}, {"unknown function", 36, {36, 35, 0xF0000099, 1}},
        {"40 bytes", 40, {40, 35, 0xF0000005, 1}},   {"before Open", 24, {24, 35, 0xF000002C, 1}},
        {"send id 0", 36, {36, 35, 0xF0000005, 0}},
    };
    for (const auto& c : cases) {
        VirtualSimulator simulator(lf_options());
        simulator.connect();
        std::vector<std::byte> raw(c.bytes);
        std::memcpy(raw.data(), c.header, std::min(c.bytes, sizeof c.header));
        simulator.handlePacket(raw);
        const auto complaints = simulator.complaints();
        ASSERT_FALSE(complaints.empty()) << c.reason;
        EXPECT_NE(std::string::npos, complaints[0].reason.find(c.reason)) << complaints[0].reason;
    }
}

}  // namespace vlt
