#include "ui/boxes.h"

#include "airports/airports.h"
#include "airports/catalogue.h"
#include "airports/parking/list_wishes.h"
#include "airports/parking_settings.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "platform/paths_form.h"
#include "traffic/collision.h"
#include "traffic/user_wishes.h"
#include "ui/commands.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vlt {

// --- numbers

// Without an airport to renew, the message that tells the new value stays.
static void lf_renewParking()
{
    if (parkState == ParkState::Loaded) {
        gf_respondSoon();
    }
}

static void lf_afterInt(const IntTextbox& box, int32_t before)
{
    if (&box == &LATERAL_RANGE) {
        parkingChanged = true;
        gf_applyLateralRange();
    } else if (&box == &MAX_LIVE) {
        gf_notePerAirport();
        maxLiveChanged = true;
    } else if (&box == &CUSTOM_MAX_PARK || &box == &parking_percentage) {
        lf_renewParking();
    } else if (&box == &MATCHING_DEPTH && box.value > before) {
        clearNoMatchList = true;
    }
}

static int32_t lf_number(const IntTextbox& box, const std::string& text)
{
    if (text.empty()) {
        return &box == &parking_percentage ? 0 : box.def;
    }
    try {
        return std::stoi(text);
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument("invalid stoi argument");
    } catch (const std::out_of_range&) {
        throw std::out_of_range("stoi argument out of range");
    }
}

Typed lf_processTbInt(IntTextbox& box, std::string_view text)
{
    try {
        const int32_t before = box.value;
        const int32_t typed = lf_number(box, std::string(text));
        if (!text.empty() && typed == before) {
            showMessage(format("Same {} value {}, no changes made", box.name, before), false);
            return Typed::Same;
        }
        box.value = std::clamp(typed, box.min, box.max);
        if (box.kept == Kept::InFile) {
            saveParameter(box);
        }
        showMessage(format("The new {} is {}", box.name, box.value.load()), false);
        lf_afterInt(box, before);
        return Typed::Stored;
    } catch (const std::exception& e) {
        logLine(format("lf_processTbInt exception {}", e.what()));
        return Typed::Unreadable;
    }
}

static float lf_hours(const FloatTextbox& box, const std::string& text)
{
    try {
        const float hours = text.empty() ? box.def : std::stof(text);
        if (std::isnan(hours)) {
            throw std::invalid_argument("no number");
        }
        return hours;
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument("invalid stof argument");
    } catch (const std::out_of_range&) {
        throw std::out_of_range("stof argument out of range");
    }
}

Typed lf_processTbFloat(FloatTextbox& box, std::string_view text)
{
    constexpr float kStepsPerHour = 2;
    try {
        const float typed = lf_hours(box, std::string(text));
        if (!text.empty() && typed == box.value) {
            showMessage(format("Same {} value {:.1F}, no changes made", box.name, typed), false);
            return Typed::Same;
        }
        const float hours = std::clamp(typed, box.min, box.max);
        const auto steps = static_cast<int32_t>(std::lround(hours * kStepsPerHour)) - 1;
        MAX_FIT.value = std::clamp(steps, MAX_FIT.min, MAX_FIT.max);
        saveParameter(MAX_FIT);
        gf_applyMaxFit();
        showMessage(format("The new {} is {:.1F}", box.name, box.value.load()), false);
        lf_renewParking();
        return Typed::Stored;
    } catch (const std::exception& e) {
        logLine(format("lf_processTbFloat exception {}", e.what()));
        return Typed::Unreadable;
    }
}

// --- texts

static void lf_store(StringTextbox& box, const std::string& text)
{
    box.value = text;
    saveParameter(box);
}

static void lf_enterCallsign(const std::string& typed)
{
    constexpr size_t kShortest = 4;
    constexpr size_t kLongest = 8;
    const std::string callsign = gf_upperCase(typed);
    if (callsign.empty()) {
        gf_pressButton(UNBLOCK);
    } else if (callsign.size() < kShortest || callsign.size() > kLongest) {
        showMessage(format("callsign \"{}\" is not valid", typed), false);
    } else if (callsign == BLOCK_CALLSIGN.value.load()) {
        showMessage(format("callsign \"{}\" was already set ...", callsign), false);
    } else {
        lf_store(BLOCK_CALLSIGN, callsign);
        blockChanged = true;
        showMessage(format("live aircraft with callsign \"{}\" will be blocked", callsign), false);
    }
}

static void lf_enterDestination(const std::string& typed)
{
    constexpr size_t kCodeLength = 4;
    const std::string code = gf_upperCase(typed);
    if (code.empty()) {
        lf_store(DESTINATION, "");
        destinationChanged = true;
        showMessage("destination set to empty", false);
    } else if (code.size() != kCodeLength) {
        showMessage(format("destination \"{}\" is not valid", typed), false);
    } else if (code == DESTINATION.value.load()) {
        showMessage(format("destination \"{}\" was already set ...", code), false);
    } else if (findAirport(code) == nullptr) {
        showMessage(format("destination \"{}\" is unknown ...", code), false);
    } else {
        lf_store(DESTINATION, code);
        destinationChanged = true;
        logLine(format("New destination: {}", code));
    }
}

static void lf_enterInstallPath(const std::string& path)
{
    constexpr int32_t kDelay = 3;  // seconds
    std::error_code error;
    if (path.empty() || !std::filesystem::is_directory(gf_toNativeForm(path), error)) {
        showMessage(format("This install path does not exist: {}", path), false);
        return;
    }
    ALL_INSTALL_PATH.value = path;
    SIM_INSTALL_PATH.value = path;
    saveParameter(SIM_INSTALL_PATH);
    showMessage(format("Install path exists, {} will restart", kProgramName), true);
    gf_requestStop(ExitReason::NewSettings, kDelay);
}

void gf_enterText(StringTextbox& box, std::string_view text)
{
    const std::string typed(text);
    clearMessage();
    if (&box == &BLOCK_CALLSIGN) {
        lf_enterCallsign(typed);
    } else if (&box == &DESTINATION) {
        lf_enterDestination(typed);
    } else if (&box == &ALL_INSTALL_PATH) {
        lf_enterInstallPath(typed);
    }
}

}  // namespace vlt
