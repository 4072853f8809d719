// A small client of the virtual simulator, for tests: the program's definitions and events, and
// every message kept.
#pragma once

#include "sim/definitions.h"
#include "sim/wire/ids.h"
#include "sim/wire/packets.h"
#include "standin/direct.h"
#include "standin/virtual_simulator.h"

#include <array>
#include <string>
#include <vector>

namespace vlt {

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
        SimConnect_Open(&handle, "Velatra", 0);
        gf_defineEverything(handle);
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

    // Lets time pass and takes in what came.
    void wait(double seconds)
    {
        m_simulator.advance(seconds);
        const auto keep = [](std::span<const std::byte> message, void* self) {
            PacketReader reader(message);
            reader.skip(8);
            static_cast<TestClient*>(self)->messages.push_back(
                {static_cast<SimMessageId>(reader.u32()), {message.begin(), message.end()}});
        };
        SimConnect_CallDispatch(handle, keep, this);
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
        SimConnect_AICreateNonATCAircraft(handle, title, tail, at, kReqCreate);
        wait(0.1);
        const auto announced = taken(SimMessageId::ObjectAddRemove);
        return announced.empty() ? 0 : announced[0].word(2);
    }
    void freeze(uint32_t object)
    {
        SimConnect_AIReleaseControl(handle, object, kReqReleaseControl);
        for (const uint32_t event :
             {FREEZE_LATITUDE_LONGITUDE_SET, FREEZE_ALTITUDE_SET, FREEZE_ATTITUDE_SET}) {
            SimConnect_TransmitClientEvent(handle, object, event, 1, kEventGroup, 0);
        }
    }
    // Latitude, longitude, pitch, bank, heading (radians), altitude, vertical speed, airspeed.
    SimStatus setPosition(uint32_t object, const std::array<double, 8>& values)
    {
        return SimConnect_SetDataOnSimObject(handle, kDefPosition, object, std::as_bytes(std::span(values)));
    }

    SimHandle handle = nullptr;
    std::vector<TestMessage> messages;

private:
    VirtualSimulator& m_simulator;
};

}  // namespace vlt
