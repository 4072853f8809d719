#include "ui/commands.h"

#include "airports/airports.h"
#include "airports/parking/list_wishes.h"
#include "airports/parking/park_airport.h"
#include "airports/parking/renewal.h"
#include "airports/parking_settings.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/discovery.h"
#include "traffic/collision.h"
#include "traffic/user_wishes.h"

#include <array>
#include <stdexcept>
#include <string>

namespace vlt {

// --- check boxes

static void lf_switchNavLights()
{
    navLightsChanged = true;
}

static void lf_switchRange()
{
    parkingChanged = true;
    rangeChanged = AUTO_RANGE.value.load();
}

void gf_notePerAirport()
{
    if (parkState == ParkState::Loaded) {
        parkingChanged = true;
    }
}

void gf_respondSoon()
{
    constexpr int32_t kPeriod = 15;  // seconds
    gf_notePerAirport();
    if (parkState != ParkState::Loaded || INITIAL_LOAD_ONLY.value) {
        clearMessage();
        return;
    }
    renewalWanted = true;
    const int32_t left = kPeriod - display.secondsCounter % kPeriod;
    showMessage(format("{} will respond in {} second{} ...", kProgramName, left, gf_plural(left)), false);
}

// A scan switched on before RealTraffic is there can still happen in this start of the work.
static void lf_scanAtOnce(const Checkbox& box, const char* nowText, const char* laterText)
{
    constexpr int32_t kDelay = 2;  // seconds
    if (!box.value) {
        clearMessage();
    } else if (!settingsOpen) {
        showMessage(laterText, false);
    } else {
        showMessage(nowText, true);
        gf_requestStop(ExitReason::NewSettings, kDelay);
    }
}

static void lf_scanLiveries()
{
    if (SCAN_LIVERIES.value && settingsOpen) {
        gf_resetLiveriesAtNextRun();
    }
    lf_scanAtOnce(SCAN_LIVERIES, "Your liveries will be scanned",
                  "Your liveries will be scanned at the next start of Velatra, recommended after you have "
                  "add/removed AI aircraft models/liveries");
}

static void lf_scanAirports()
{
    lf_scanAtOnce(SCAN_AIRPORTS, "Your airports will be scanned",
                  "Your airports will be scanned at the next start of Velatra, recommended after you have "
                  "add/removed airports");
}

// What follows from a box beside its being stored. A message for one state, with the program's name in its
// place, is cleared by the other.
struct BoxEffect {
    const Checkbox* box;
    void (*act)();
    const char* whenOn;
    const char* whenOff;
};

// clang-format off
static constexpr std::array<BoxEffect, 19> kBoxEffects{{
    {&NAV_LIGHTS_WHILE_PARKED, lf_switchNavLights, nullptr, nullptr},
    {&AUTO_RANGE, lf_switchRange, nullptr, nullptr},
    {&SCAN_LIVERIES, lf_scanLiveries, nullptr, nullptr},
    {&SCAN_AIRPORTS, lf_scanAirports, nullptr, nullptr},
    {&LEARN_SOFT, gf_notePerAirport, nullptr, nullptr},
    {&PARK_FAKE, gf_respondSoon, nullptr, nullptr},
    {&PARK_SOFT, gf_respondSoon, nullptr, nullptr},
    {&WEEK, gf_respondSoon, nullptr, nullptr},
    {&LIG_AUTOMATIC, nullptr, nullptr, "The liveries defined by your lfolder parameters will be scanned"},
    {&LIG_PRIORITIZE, nullptr, "Liveries in lower lfolders that are already available will be skipped", nullptr},
    {&AFG_AUTOMATIC, nullptr, nullptr, "The airports defined by your afolder parameters will be scanned"},
    {&INITIAL_LOAD_ONLY, nullptr, "Initial Load Only: static parked aircraft are generated once, no renewal every 20 minutes", nullptr},
    {&COLLISION_LIVE_PARKED_GND, nullptr, nullptr, "Be aware, no collision avoidance with live aircraft vs parked static on the ground"},
    {&COLLISION_USER_GND, nullptr, nullptr, "Be aware, no collision avoidance with user aircraft on the ground"},
    {&COLLISION_USER_AIR, nullptr, nullptr, "Be aware, no collision avoidance with user aircraft in the air"},
    {&SUPPRESS_STUB, nullptr, "Exclude FSLTL-liveries titles ending with _STUB from scan", nullptr},
    {&GUID_CHANGES, nullptr, nullptr, "Be aware, no more livery updates: you miss correct data for Learn, LittleNavMap, etc!"},
    {&AEROWINX, nullptr, "Note: This mode is for Aerowinx PSX users only, please re-start {}", nullptr},
    {&ALWAYS_ON_TOP, nullptr, "{}'s window will remain visible", nullptr},
}};
// clang-format on

static void lf_followUp(const BoxEffect& effect)
{
    if (effect.act != nullptr) {
        effect.act();
        return;
    }
    const char* text = effect.box->value ? effect.whenOn : effect.whenOff;
    showMessage(text != nullptr ? format(fmt::runtime(text), kProgramName) : "", false);
}

static void lf_click(Checkbox& box)
{
    if (&box == &AUTO_RANGE) {
        gf_switchAutoRange(!box.value);
    } else {
        box.value = !box.value;
    }
    saveParameter(box);
    for (const BoxEffect& effect : kBoxEffects) {
        if (effect.box == &box) {
            lf_followUp(effect);
        }
    }
}

// A failure here mustn't end more than the command.
template <typename Act>
static void lf_HandleWMCOMMAND(const Act& act)
{
    try {
        act();
    } catch (const std::exception& e) {
        logLine(format("lf_HandleWMCOMMAND exception {}", e.what()));
    }
}

void gf_clickCheckbox(Checkbox& box)
{
    lf_HandleWMCOMMAND([&box] { lf_click(box); });
}

// --- buttons

static void lf_reRead()
{
    listWishesAllowed = false;
    reReadRequested = true;
}

static void lf_unblock()
{
    const std::string callsign = BLOCK_CALLSIGN.value;
    if (callsign.empty()) {
        showMessage("Nothing to block or unblock...", false);
        return;
    }
    BLOCK_CALLSIGN.value = "";
    saveParameter(BLOCK_CALLSIGN);
    blockChanged = true;
    showMessage(format("no more blocking of live aircraft \"{}\"", callsign), false);
}

static void lf_flushStatic()
{
    showMessage("All static parked aircraft will be removed ...", false);
    flushStaticRequested = true;
    display.airport.flushStaticEnabled = false;
}

struct ButtonAct {
    const Button* button;
    void (*act)();
};
static constexpr std::array<ButtonAct, 3> kButtonActs{
    {{&UNBLOCK, lf_unblock}, {&RE_READ, lf_reRead}, {&FLUSH_STATIC, lf_flushStatic}}};

const Button* gf_findButton(std::string_view name)
{
    for (const ButtonAct& row : kButtonActs) {
        if (gf_upperCase(row.button->name) == gf_upperCase(name)) {
            return row.button;
        }
    }
    return nullptr;
}

void gf_pressButton(const Button& button)
{
    for (const ButtonAct& row : kButtonActs) {
        if (row.button == &button) {
            lf_HandleWMCOMMAND(row.act);
        }
    }
}

// --- what takes input

bool gf_isEnabled(const Parameter& control)
{
    struct Enabled {
        const Parameter* control;
        bool (*now)();
    };
    static constexpr auto whileNotPlanning = [] { return display.airport.parkingEnabled.load(); };
    static constexpr std::array<Enabled, 14> kSometimes{{
        {&LATERAL_RANGE, [] { return !AUTO_RANGE.value; }},
        {&AUTO_RANGE_ABOVE_HEIGHT, [] { return AUTO_RANGE.value.load(); }},
        {&parking_percentage, [] { return whileNotPlanning() && display.airport.percentageEnabled; }},
        {&FLUSH_STATIC, [] { return whileNotPlanning() && display.airport.flushStaticEnabled; }},
        {&PARK_FAKE, whileNotPlanning},
        {&PARK_SOFT, whileNotPlanning},
        {&INITIAL_LOAD_ONLY, whileNotPlanning},
        {&WEEK, whileNotPlanning},
        {&MAX_FIT_FL, whileNotPlanning},
        {&CUSTOM_MAX_PARK, whileNotPlanning},
        {&LEARN_SOFT, [] { return display.airport.learnSoftEnabled.load(); }},
        {&ALL_INSTALL_PATH, [] { return display.installPathEnabled.load(); }},
        {&DESTINATION, [] { return listWishesAllowed.load(); }},
        {&RE_READ, [] { return whileNotPlanning() && listWishesAllowed; }},
    }};
    for (const Enabled& row : kSometimes) {
        if (row.control == &control) {
            return row.now();
        }
    }
    return true;
}

}  // namespace vlt
