// The simulator that stands in for the real one: whole client packets in, messages out, on a clock
// that is given from outside.
//
// It is a simulator, not an echo: aircraft have ids, height above the ground, freezes and an AI
// that takes over whatever is left unfrozen, and it keeps a list of everything the client did
// wrong. The same class runs in process for tests and replays and behind sockets for a whole run.
//
// Any thread: every public function takes the one lock inside. Nothing is called with it held.
#pragma once

#include "sim/wire/packets.h"
#include "standin/packet_writer.h"
#include "standin/sim_checks.h"
#include "standin/sim_events.h"
#include "standin/sim_object.h"
#include "standin/sim_variables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace vlt {

inline constexpr uint32_t kVirtualUserId = 1;
inline constexpr uint32_t kFirstVirtualId = 16;  // of the AI objects; ids only rise
inline constexpr int kFramesPerSecond = 30;

// Where the user is and where to: straight on, at one height, or on the ground.
struct UserState {
    double lat = 47.6;
    double lon = 11.5;
    double altitude = 0;  // feet; taken from the ground when onGround
    double heading = 0;   // radians true
    double speed = 0;     // knots over the ground
    bool onGround = true;
};

struct SimulatorOptions {
    std::string applicationName = "Lockheed Martin Prepar3D v5";
    std::array<uint32_t, 4> applicationVersion{5, 4, 9, 45482};
    InstalledTitle userKind{"Sample A320 house colours", "A320", "Large", 11.0, 0};
    UserState user;
    Terrain terrain;
    int64_t zuluStart = 1717665600;      // seconds since 1970 at the start of the clock
    std::vector<InstalledTitle> titles;  // what can be created
    bool anyTitle = false;               // every title can be created, as a Large of 10 ft
    size_t maxObjects = 1000;            // with the user's
    double trackPeriod = 1;              // seconds between the points of a track; 0 for no tracks
    bool keepCalls = false;              // takeCalls gives every packet
};

// What is wrong with it at present.
struct SimulatorFaults {
    bool refuseTitles = false;    // nothing can be created
    double acknowledgeAfter = 0;  // seconds from a creation to the object; kNeverInLife for never
    bool noFrames = false;        // no frame events
};

// One packet of the client, decoded; fields that its function doesn't have stay empty.
struct SimCall {
    double time = 0;  // seconds of the simulator's clock
    SimFunction function = SimFunction::Open;
    uint32_t sendId = 0;
    uint32_t object = 0;
    uint32_t id = 0;     // event, definition or group, the first number of the function
    uint32_t value = 0;  // event data, request or period
    std::string text;    // title, name of event or variable, path
    std::string tailNumber;
    std::vector<double> values;  // of a SetDataOnSimObject or an initial position
};

// Counts of the client's doings.
struct SimulatorCounts {
    std::map<uint32_t, uint64_t> packets;  // by function number
    uint64_t complaints = 0;
    uint64_t created = 0;
    uint64_t refused = 0;
    uint64_t removed = 0;
    uint64_t messages = 0;  // to the client
    uint64_t connections = 0;
};

class VirtualSimulator
{
public:
    explicit VirtualSimulator(SimulatorOptions options);

    // ---- the client's side
    // A client connects; false if the simulator isn't up or has a client.
    bool connect();
    // The client is gone: its objects, definitions and requests go with it.
    void disconnect();
    // Takes one whole packet, whatever is in it.
    void handlePacket(std::span<const std::byte> packet);
    // The messages since the last call, in their order.
    std::vector<std::vector<std::byte>> takeMessages();

    // ---- the clock
    // Lets time pass, frame by frame.
    void advance(double seconds);
    double now() const;

    // ---- the world's doings
    void setStarted(bool started);  // up, from construction on; a simulator that goes down drops its client
    bool started() const;
    void setRunning(bool running);  // the flight runs; tells "Sim" if that is news
    uint32_t addForeignAircraft(const std::string& title, const std::string& tailNumber,
                                const SimInitialPosition& position);  // somebody else's; its id
    void quit();                                                      // the quit message
    void loadFlight();                                                // tells "FlightLoaded"
    void setUser(const UserState& user);
    void fill();  // somebody else's aircraft take all the room that is left
    SimulatorFaults faults() const;
    void setFaults(const SimulatorFaults& faults);

    // ---- looking on
    UserState user() const;
    std::optional<SimObject> object(uint32_t id) const;
    std::vector<SimObject> objects() const;     // without the user's, by rising id
    std::vector<ObjectLife> lives() const;      // of all that ever were, by rising id
    std::vector<Complaint> complaints() const;  // the first kMaxComplaints
    void forgetRemoved();                       // the lives that are over
    SimulatorCounts counts() const;
    std::vector<SimCall> takeCalls();  // since the last call

    static constexpr size_t kMaxComplaints = 1000;

private:
    struct PeriodicRequest {
        uint32_t definition = 0;
        uint32_t object = 0;
        int64_t nextUs = 0;
    };

    // All below run with the lock held.
    void complain(const ClientHeader& header, std::string reason);
    void raise(uint32_t exception, uint32_t index);
    void send(PacketWriter& writer);
    void sendEvent(const char* name, uint32_t data);
    void sendObjectEvent(const char* name, uint32_t object);
    void sendData(SimMessageId message, uint32_t request, uint32_t definition, const SimObject& object,
                  uint32_t entry, uint32_t outOf);
    SimObject* findObject(uint32_t id);
    std::optional<InstalledTitle> findTitle(const std::string& title) const;

    void dispatch(PacketReader& reader, SimCall& call);
    void onOpen(PacketReader& reader, SimCall& call);
    void onMapEvent(PacketReader& reader, SimCall& call);
    void onTransmitEvent(PacketReader& reader, SimCall& call);
    void onEventGroup(PacketReader& reader, SimCall& call);
    void onAddToDefinition(PacketReader& reader, SimCall& call);
    void onRequestData(PacketReader& reader, SimCall& call);
    void onRequestByType(PacketReader& reader, SimCall& call);
    void onSetData(PacketReader& reader, SimCall& call);
    void onSubscribe(PacketReader& reader, SimCall& call);
    void onCreate(PacketReader& reader, SimCall& call);
    void onRelease(PacketReader& reader, SimCall& call);
    void onRemove(PacketReader& reader, SimCall& call);
    void onFlightPlan(PacketReader& reader, SimCall& call);
    void writeObject(SimObject& object, const DataDefinition& definition, SimCall& call);
    void noteStep(const SimObject& before, const SimObject& after);
    void noteFreezes(const SimObject& object);

    void frame();
    void bringNewObjects();
    void takeRemovedObjects();
    void moveUser(double seconds);
    void sampleTracks();
    void answerPeriodic();
    void applyUser(const UserState& user);
    uint32_t createObject(const InstalledTitle& kind, std::string tailNumber,
                          const SimInitialPosition& position, bool byClient);
    void eraseObject(std::map<uint32_t, SimObject>::iterator at);
    void dropClient();
    double nowLocked() const;
    double elevationAt(double lat) const;
    VariableSource sourceOf(const SimObject& object) const;

    const SimulatorOptions m_options;
    std::unordered_map<std::string, InstalledTitle> m_titles;

    mutable std::mutex m_mutex;  // all below
    int64_t m_nowUs = 0;
    int64_t m_frames = 0;
    SimulatorFaults m_faults;
    bool m_started = true;
    bool m_running = true;
    bool m_connected = false;
    bool m_opened = false;
    uint32_t m_lastSendId = 0;
    uint32_t m_nextObjectId = kFirstVirtualId;
    ClientHeader m_header;  // of the packet at hand
    UserState m_userState;
    SimObject m_user;
    std::map<uint32_t, SimObject> m_objects;
    std::map<uint32_t, ObjectLife> m_lives;
    std::vector<SimObject> m_newObjects;     // come with the next frame
    std::vector<uint32_t> m_removedObjects;  // go with the next frame
    std::map<uint32_t, DataDefinition> m_definitions;
    std::map<uint32_t, const SimEventRow*> m_events;
    std::set<std::pair<uint32_t, uint32_t>> m_groups;  // group, event
    std::map<std::string, uint32_t> m_subscriptions;   // name in capitals, event
    std::map<uint32_t, PeriodicRequest> m_periodic;    // by request
    std::vector<std::vector<std::byte>> m_messages;
    std::vector<Complaint> m_complaints;
    std::vector<SimCall> m_calls;
    SimulatorCounts m_counts;
};

}  // namespace vlt
