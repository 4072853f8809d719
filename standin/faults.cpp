#include "standin/faults.h"

#include "core/base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace vlt {

constexpr double kStallSeconds = 5;
constexpr double kLateSeconds = 20;
constexpr size_t kBurstLines = 5000;
constexpr double kClockOff = 2 * 3600;  // seconds
constexpr double kTeleportDegrees = 1;  // of latitude, 60 nm

template <typename Change>
static void lf_changeFaults(VirtualSimulator& simulator, const Change& change)
{
    SimulatorFaults faults = simulator.faults();
    change(faults);
    simulator.setFaults(faults);
}

static void lf_teleport(VirtualSimulator& simulator)
{
    UserState user = simulator.user();
    user.lat += user.lat > 0 ? -kTeleportDegrees : kTeleportDegrees;
    simulator.setUser(user);
}

using Simulator = VirtualSimulator;
using Faults = SimulatorFaults;
using Client = RealTrafficClient;

struct SimulatorFault {
    std::string_view word, meaning;
    void (*play)(VirtualSimulator&);
};
struct ClientFault {
    std::string_view word, meaning;
    void (*play)(RealTrafficClient&);
};
struct FeedFault {
    std::string_view word, meaning;
    void (*play)(FeedPlayer&);
};
struct FilesFault {
    std::string_view word, meaning;
    FileFault fault;
};

// clang-format off
constexpr std::array<SimulatorFault, 14> kSimulatorFaults{{
    {"sim-pauses",         "the flight stands still",                     [](Simulator& s) { s.setRunning(false); }},
    {"sim-resumes",        "it goes on",                                  [](Simulator& s) { s.setRunning(true); }},
    {"sim-quits",          "it says goodbye",                             [](Simulator& s) { s.quit(); }},
    {"sim-dies",           "it goes without a word",                      [](Simulator& s) { s.setStarted(false); }},
    {"sim-back",           "it is there again",                           [](Simulator& s) { s.setStarted(true); }},
    {"titles-refused",     "no object can be created",                    [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.refuseTitles = true; }); }},
    {"titles-accepted",    "objects can be created again",                [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.refuseTitles = false; }); }},
    {"objects-never-come", "created objects don't appear",                [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.acknowledgeAfter = kNeverInLife; }); }},
    {"objects-come-late",  "they appear after 20 s",                      [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.acknowledgeAfter = kLateSeconds; }); }},
    {"objects-come",       "they appear at once, also those that waited", [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.acknowledgeAfter = 0; }); }},
    {"objects-fill",       "1000 objects are there",                      [](Simulator& s) { s.fill(); }},
    {"frames-stop",        "no frame events",                             [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.noFrames = true; }); }},
    {"frames-go-on",       "frame events again",                          [](Simulator& s) { lf_changeFaults(s, [](Faults& f) { f.noFrames = false; }); }},
    {"flight-loaded",      "the user loads a flight",                     [](Simulator& s) { s.loadFlight(); }},
}};
constexpr SimulatorFault kTeleport{"user-teleports", "the user is elsewhere", lf_teleport};
constexpr std::string_view kStall = "sim-stalls";  // it does nothing for 5 s
constexpr std::array<ClientFault, 4> kClientFaults{{
    {"realtraffic-leaves",    "it closes its connection",  [](Client& c) { c.leave(); }},
    {"realtraffic-back",      "it connects again",         [](Client& c) { c.comeBack(); }},
    {"realtraffic-half-open", "it doesn't read any more",  [](Client& c) { c.stopReading(); }},
    {"realtraffic-garbage",   "it sends what nobody asked", [](Client& c) { c.sendGarbage(); }},
}};
constexpr std::array<FeedFault, 5> kFeedFaults{{
    {"feed-silent",       "no reports",                     [](FeedPlayer& f) { f.setSilent(true); }},
    {"feed-back",         "reports again",                  [](FeedPlayer& f) { f.setSilent(false); }},
    {"feed-burst",        "5000 reports at once",           [](FeedPlayer& f) { f.burst(kBurstLines); }},
    {"feed-clock-off",    "its clock is two hours ahead",   [](FeedPlayer& f) { f.setClockOff(kClockOff); }},
    {"feed-clock-right",  "its clock is right again",       [](FeedPlayer& f) { f.setClockOff(0); }},
}};
constexpr std::array<FilesFault, 4> kFilesFaults{{
    {"server-slow",   "downloads take 8 s more",  FileFault::Slow},
    {"server-silent", "downloads never end",      FileFault::Silent},
    {"server-fails",  "500 for every file",       FileFault::ServerError},
    {"server-well",   "downloads work again",     FileFault::None},
}};
// clang-format on

template <typename Rows>
static auto lf_find(const Rows& rows, std::string_view word)
{
    return std::ranges::find(rows, word, &Rows::value_type::word);
}

template <typename Rows, typename Target>
static bool lf_play(const Rows& rows, std::string_view word, Target* target)
{
    const auto row = lf_find(rows, word);
    if (row == rows.end() || target == nullptr) {
        return false;
    }
    row->play(*target);
    return true;
}

static bool lf_playOnFiles(std::string_view word, FileServer* files)
{
    const auto row = lf_find(kFilesFaults, word);
    if (row == kFilesFaults.end() || files == nullptr) {
        return false;
    }
    files->setFault(row->fault);
    return true;
}

bool gf_playFault(std::string_view word, const FaultTargets& targets)
{
    if (word == kTeleport.word && targets.simulator != nullptr) {
        kTeleport.play(*targets.simulator);
        return true;
    }
    if (word == kStall && targets.server != nullptr) {
        targets.server->stall(kStallSeconds);
        return true;
    }
    return lf_play(kSimulatorFaults, word, targets.simulator) ||
           lf_play(kClientFaults, word, targets.realTraffic) || lf_play(kFeedFaults, word, targets.feed) ||
           lf_playOnFiles(word, targets.files);
}

static bool lf_isFault(std::string_view word)
{
    return word == kTeleport.word || word == kStall ||
           lf_find(kSimulatorFaults, word) != kSimulatorFaults.end() ||
           lf_find(kClientFaults, word) != kClientFaults.end() ||
           lf_find(kFeedFaults, word) != kFeedFaults.end() ||
           lf_find(kFilesFaults, word) != kFilesFaults.end();
}

std::optional<PlannedFault> gf_plannedFault(std::string_view text)
{
    const size_t at = text.find('@');
    if (at == std::string_view::npos || !lf_isFault(text.substr(0, at))) {
        return std::nullopt;
    }
    PlannedFault fault{std::string(text.substr(0, at)), 0};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + at + 1, end, fault.second);
    return error == std::errc() && stop == end && fault.second >= 0 ? std::optional(fault) : std::nullopt;
}

std::string gf_faultWords()
{
    std::string all;
    const auto add = [&all](std::string_view word, std::string_view meaning) {
        all += format("{:22}{}\n", word, meaning);
    };
    const auto addAll = [&add](const auto& rows) {
        for (const auto& row : rows) {
            add(row.word, row.meaning);
        }
    };
    addAll(kSimulatorFaults);
    add(kTeleport.word, kTeleport.meaning);
    add(kStall, "the simulator does nothing for 5 s");
    addAll(kClientFaults);
    addAll(kFeedFaults);
    addAll(kFilesFaults);
    return all;
}

}  // namespace vlt
