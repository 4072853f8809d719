#include "traffic/traffic.h"

#include "core/base/locks.h"
#include "core/base/text.h"

#include <algorithm>
#include <array>

namespace vlt {

std::vector<LiveAc> liveAcs;
std::vector<StaticAc> staticAcs;
std::vector<std::string> ghostCallsigns;
std::vector<uint32_t> spawnStack;
std::deque<CreateRequest> liveCreateQueue;
std::deque<CreateRequest> staticCreateQueue;
std::deque<uint32_t> removeWaitQueue;
std::list<uint32_t> standChangeList;
std::vector<SimMessage> ackWait;
std::vector<PositionRecord> fillBuffer;
std::vector<SimMessage> simMessages;
std::deque<FeedRecord> feedQueue;
bool intakeOpen = false;

std::atomic<int32_t> tick{0};
std::atomic<bool> secondDue{false};
std::atomic<float> frameRate{0.0F};
std::atomic<bool> userOnGround{false};
std::atomic<int32_t> currentQnh{kStandardQnh};
int32_t secondCount = 0;
bool wasPaused = false;
bool flareActive = false;
UserAc userNow;
std::string blockedCallsign;
HourStamp hourNow;
std::optional<ParkAirportPlace> parkAirport;

std::string_view stateWord(FsState fs)
{
    static constexpr std::array<std::string_view, 5> kWords{"buffer", "adding2sim", "active", "liveryrespawn",
                                                            "removingfromsim"};
    return kWords.at(static_cast<size_t>(fs));
}

std::string_view stateWord(StState st)
{
    static constexpr std::array<std::string_view, 8> kWords{
        "pushing_back", "pushed_back", "taxi", "take_off", "flying", "parking", "parked", "birth"};
    return kWords.at(static_cast<size_t>(st));
}

std::string aimo(const AcBase& ac)
{
    return format("{:3} {:4}", ac.airline, ac.model);
}

std::string gf_flightText(const AcBase& ac)
{
    const bool routed = !ac.origin.empty() || !ac.destination.empty();
    const std::string route = routed ? format("{:3}->{:3}", ac.origin, ac.destination) : std::string(8, ' ');
    return format("{} {:8} {}", route, ac.callsign, ac.regcode);
}

std::string logName(const AcBase& ac)
{
    return format("{} {}", gf_flightText(ac), aimo(ac));
}

std::string gf_failedKey(const AcBase& ac)
{
    return format("{} {}", aimo(ac), ac.regcode);
}

void gf_setSt(LiveAc& ac, StState st)
{
    if (ac.st != st) {
        ac.prevSt = ac.st;
        ac.st = st;
        const bool mayHold = st == StState::Taxi || st == StState::PushedBack;
        ac.holding = ac.holding && mayHold;
    }
}

template <typename Fits>
static LiveAc* lf_find(Fits fits)
{
    const auto found = std::ranges::find_if(liveAcs, fits);
    return found == liveAcs.end() ? nullptr : &*found;
}

LiveAc* gf_liveByHexid(uint32_t hexid)
{
    return lf_find([hexid](const LiveAc& ac) { return ac.hexid == hexid; });
}

LiveAc* gf_liveByObject(uint32_t objectid)
{
    return lf_find([objectid](const LiveAc& ac) { return ac.objectid == objectid; });
}

LiveAc* gf_liveByCallsign(std::string_view callsign)
{
    return lf_find([callsign](const LiveAc& ac) {
        return ac.callsign == callsign && ac.fs != FsState::RemovingFromSim;
    });
}

int64_t gf_activeCount()
{
    return std::ranges::count(liveAcs, FsState::Active, &LiveAc::fs);
}

void gf_reserveTables()
{
    liveAcs.reserve(512);
    staticAcs.reserve(256);
    ghostCallsigns.reserve(64);
    spawnStack.reserve(64);
    ackWait.reserve(128);
    fillBuffer.reserve(512);
    const std::scoped_lock lock(messageMutex);
    simMessages.reserve(256);
}

void gf_clearTables()
{
    {
        const std::scoped_lock lock(messageMutex);
        simMessages.clear();
    }
    fillBuffer.clear();
    spawnStack.clear();
    liveCreateQueue.clear();
    staticCreateQueue.clear();
    removeWaitQueue.clear();
    standChangeList.clear();
    ackWait.clear();
    staticAcs.clear();
    {
        const std::scoped_lock lock(feedMutex);
        intakeOpen = false;
        feedQueue.clear();
    }
    liveAcs.clear();
    ghostCallsigns.clear();
    secondDue = false;
    secondCount = 0;
    frameRate = 0.0F;
    userOnGround = false;
    wasPaused = false;
    flareActive = false;
    hourNow = {};
    userNow = {};
    blockedCallsign.clear();
}

}  // namespace vlt
