#include "airports/parking_settings.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "core/base/xml_file.h"

#include <algorithm>
#include <string>

namespace vlt {

const std::array<ParkingSetting, kParkingSettingCount> kParkingSettings{{
    {.parameter = &LATERAL_RANGE},
    {.parameter = &AUTO_RANGE},
    {.parameter = &WEEK, .written = "24"},  // "off" to its readers: looking at the whole week isn't kept
    {.parameter = &PARK_FAKE},
    {.parameter = &PARK_SOFT},
    {.parameter = &parking_percentage, .orDefault = true},
    {.parameter = &INITIAL_LOAD_ONLY},
    {.parameter = &MAX_FIT},
    {.parameter = &MAX_LIVE, .orDefault = true, .onlyIfSet = true},
    {.parameter = &LEARN_SOFT},
}};

std::atomic<bool> parkingChanged{false};

static ParkingSettings usersOwn;     // [worker] from before the load, while an airport is in force
static ParkingSettings airportsOwn;  // [worker] from after it

// Where a parameter stands in the table that it is part of.
static size_t lf_place(const Parameter& parameter)
{
    const auto found = std::ranges::find(kParkingSettings, &parameter, &ParkingSetting::parameter);
    return static_cast<size_t>(found - kParkingSettings.begin());
}

static BoolParameter* lf_switch(const ParkingSetting& setting)
{
    return dynamic_cast<BoolParameter*>(setting.parameter);
}

static IntParameter& lf_number(const ParkingSetting& setting)
{
    return dynamic_cast<IntParameter&>(*setting.parameter);
}

static int32_t lf_value(const ParkingSetting& setting)
{
    const BoolParameter* on = lf_switch(setting);
    return on != nullptr ? static_cast<int32_t>(on->value) : lf_number(setting).value.load();
}

static std::string lf_text(const ParkingSetting& setting)
{
    if (const BoolParameter* on = lf_switch(setting)) {
        return on->value ? "true" : "false";
    }
    return std::to_string(lf_number(setting).value);
}

// --- the file

static std::optional<int32_t> lf_read(const ParkingSetting& setting, const pugi::xml_node& parameters)
{
    const pugi::xml_attribute value =
        parameters.find_child_by_attribute("parameter", "name", setting.parameter->name.c_str())
            .attribute("value");
    if (!value) {
        return std::nullopt;
    }
    if (lf_switch(setting) != nullptr) {
        return value.as_bool() ? 1 : 0;
    }
    const IntParameter& number = lf_number(setting);
    return std::clamp(gf_wholeNumber(value), number.min, number.max);
}

ParkingSettings gf_readParkingSettings(const pugi::xml_document& document)
{
    ParkingSettings settings;
    std::ranges::transform(kParkingSettings, settings.begin(), [&](const ParkingSetting& setting) {
        return lf_read(setting, document.child("parameters"));
    });
    return settings;
}

void gf_writeParkingSettings(pugi::xml_node& parameters)
{
    for (const ParkingSetting& setting : kParkingSettings) {
        if (setting.onlyIfSet && lf_value(setting) < 0) {
            continue;
        }
        pugi::xml_node node = parameters.append_child("parameter");
        node.append_attribute("name").set_value(setting.parameter->name.c_str());
        node.append_attribute("value").set_value(setting.written != nullptr ? setting.written
                                                                            : lf_text(setting).c_str());
    }
}

// --- in force

// Sets the parameter and what follows from it.
static void lf_set(const ParkingSetting& setting, int32_t value)
{
    if (setting.parameter == &AUTO_RANGE) {
        gf_switchAutoRange(value != 0);
    } else if (BoolParameter* on = lf_switch(setting)) {
        on->value = value != 0;
    } else {
        lf_number(setting).value = value;
    }
    if (setting.parameter == &LATERAL_RANGE) {
        gf_applyLateralRange();
    } else if (setting.parameter == &MAX_FIT) {
        gf_applyMaxFit();
    }
}

static void lf_log(const ParkingSetting& setting)
{
    const std::string hours =
        setting.parameter == &MAX_FIT
            ? format(" (max number of half hours, is {} hrs decimal)", MAX_FIT_FL.value.load())
            : "";
    logLine(format("{:24}: {}{}", setting.parameter->name, lf_text(setting), hours));
}

void gf_applyParkingSettings(const ParkingSettings& settings)
{
    const auto told = [&settings](size_t i) {
        return settings[i]                     ? settings[i]
               : kParkingSettings[i].orDefault ? std::optional(lf_number(kParkingSettings[i]).def)
                                               : std::nullopt;
    };
    // Switching the automatic range off brings back the range from before: the file's own comes after that.
    if (settings[lf_place(AUTO_RANGE)] == 0) {
        gf_switchAutoRange(false);
    }
    for (size_t i = 0; i < kParkingSettingCount; ++i) {
        if (const auto value = told(i)) {
            lf_set(kParkingSettings[i], *value);
        }
        if (settings[i]) {
            lf_log(kParkingSettings[i]);
        }
    }
}

// --- the user's own

// The range that counts while it isn't automatic.
static SharedValue<int32_t>& lf_ownRange()
{
    return AUTO_RANGE.value ? rangeBeforeAuto : LATERAL_RANGE.value;
}

static int32_t lf_ownValue(const ParkingSetting& setting)
{
    return setting.parameter == &LATERAL_RANGE ? lf_ownRange().load() : lf_value(setting);
}

static void lf_takeBack(const ParkingSetting& setting, int32_t value)
{
    if (setting.parameter == &LATERAL_RANGE) {
        lf_ownRange() = value;
        gf_applyLateralRange();
    } else {
        lf_set(setting, value);
    }
}

static void lf_keep(ParkingSettings& kept)
{
    std::ranges::transform(kParkingSettings, kept.begin(), lf_ownValue);
}

void gf_keepUsersSettings()
{
    lf_keep(usersOwn);
}

void gf_keepAirportsSettings()
{
    lf_keep(airportsOwn);
    parkingChanged = false;
}

bool gf_airportsSettingsChanged()
{
    return usersOwn[0] && parkingChanged;
}

void gf_takeUsersSettingsBack()
{
    for (size_t i = 0; i < kParkingSettingCount; ++i) {
        if (usersOwn[i] && airportsOwn[i] == lf_ownValue(kParkingSettings[i])) {
            lf_takeBack(kParkingSettings[i], *usersOwn[i]);
        }
        usersOwn[i].reset();
    }
}

}  // namespace vlt
