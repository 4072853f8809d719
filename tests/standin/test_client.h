// A small client of the virtual simulator, for tests: the program's definitions and events, and
// every message kept.
#pragma once

#include "sim/wire/packets.h"
#include "sim/wire/simconnect.h"
#include "standin/direct.h"
#include "standin/virtual_simulator.h"

#include <array>
#include <string>
#include <vector>

namespace vlt {

inline constexpr uint32_t kTestPosition = 402;
inline constexpr uint32_t kTestNearby = 404;
inline constexpr uint32_t kTestSubscribedSim = 201;
inline constexpr uint32_t kTestAdded = 202;
inline constexpr uint32_t kTestRemoved = 203;
inline constexpr uint32_t kTestFlaps = 218;
inline constexpr std::array<uint32_t, 3> kTestFreezes{215, 216, 217};

// One message, its body behind the header.
struct TestMessage {
    SimMessageId id{};
    std::vector<std::byte> bytes;
    // The nth u32 of the body.
    uint32_t word(size_t n) const
    {
        PacketReader reader(bytes);
        reader.skip(kServerHeaderSize + 4 * n);
        return reader.u32();
    }
};

class TestClient
{
public:
    explicit TestClient(VirtualSimulator& simulator) : m_simulator(simulator)
    {
        gf_setDirectSimulator(&simulator);
        opened = SimConnect_Open(&handle, "Velatra", 0);
    }
    ~TestClient()
    {
        if (handle) {
            SimConnect_Close(handle);
        }
        gf_setDirectSimulator(nullptr);
    }
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    // Definitions and events as the program makes them, as far as the tests use them.
    void define()
    {
        SimConnect_SubscribeToSystemEvent(handle, kTestSubscribedSim, "Sim");
        SimConnect_SubscribeToSystemEvent(handle, kTestAdded, "ObjectAdded");
        SimConnect_SubscribeToSystemEvent(handle, kTestRemoved, "ObjectRemoved");
        const auto add = [&](uint32_t definition, const char* name, const char* unit,
                             SimDataType type = SimDataType::Float64) {
            SimConnect_AddToDataDefinition(handle, definition, name, unit, type);
        };
        add(kTestPosition, "Plane Latitude", "degree");
        add(kTestPosition, "Plane Longitude", "degree");
        add(kTestPosition, "Plane Pitch degrees", "radians");
        add(kTestPosition, "Plane Bank degrees", "radians");
        add(kTestPosition, "Plane Heading degrees true", "radians");
        add(kTestPosition, "Plane Altitude", "feet");
        add(kTestPosition, "Vertical Speed", "feet per second");
        add(kTestPosition, "Airspeed True", "knots");
        add(kTestNearby, "Plane Alt Above Ground", "feet");
        add(kTestNearby, "SIM ON GROUND", "Bool", SimDataType::Int64);
        add(kTestNearby, "ATC ID", "", SimDataType::String32);
        SimConnect_MapClientEventToSimEvent(handle, kTestFreezes[0], "FREEZE_LATITUDE_LONGITUDE_SET");
        SimConnect_MapClientEventToSimEvent(handle, kTestFreezes[1], "FREEZE_ALTITUDE_SET");
        SimConnect_MapClientEventToSimEvent(handle, kTestFreezes[2], "FREEZE_ATTITUDE_SET");
        SimConnect_MapClientEventToSimEvent(handle, kTestFlaps, "FLAPS_SET");
    }

    // Lets time pass and takes in what came.
    void wait(double seconds)
    {
        m_simulator.advance(seconds);
        poll();
    }

    SimStatus poll()
    {
        return SimConnect_CallDispatch(
            handle,
            [](std::span<const std::byte> message, void* self) {
                PacketReader reader(message);
                reader.skip(8);
                static_cast<TestClient*>(self)->messages.push_back(
                    {static_cast<SimMessageId>(reader.u32()), {message.begin(), message.end()}});
            },
            this);
    }

    std::vector<TestMessage> taken(SimMessageId id)
    {
        std::vector<TestMessage> found = messages;
        std::erase_if(found, [id](const TestMessage& message) { return message.id != id; });
        return found;
    }

    // Creates an aircraft and waits for its announcement; 0 if none came.
    uint32_t create(const std::string& title, const std::string& tail, SimInitialPosition at)
    {
        messages.clear();
        SimConnect_AICreateNonATCAircraft(handle, title, tail, at, 0);
        wait(0.1);
        for (const TestMessage& message : taken(SimMessageId::ObjectAddRemove)) {
            if (message.word(1) == kTestAdded) {
                return message.word(2);
            }
        }
        return 0;
    }

    void freeze(uint32_t object)
    {
        SimConnect_AIReleaseControl(handle, object, 103);
        for (const uint32_t event : kTestFreezes) {
            SimConnect_TransmitClientEvent(handle, object, event, 1, 301, 0);
        }
    }

    // Latitude, longitude, pitch, bank, heading (radians), altitude, vertical speed, airspeed.
    SimStatus setPosition(uint32_t object, const std::array<double, 8>& values)
    {
        return SimConnect_SetDataOnSimObject(handle, kTestPosition, object, std::as_bytes(std::span(values)));
    }

    SimHandle handle = nullptr;
    SimStatus opened = kSimFail;
    std::vector<TestMessage> messages;

private:
    VirtualSimulator& m_simulator;
};

}  // namespace vlt
