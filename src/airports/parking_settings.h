// The settings that belong to an airport: its learned file keeps them, and the next visit finds them again.
//
// One table names them, in the order of the file; writer and reader walk it.
// Worker thread; reading touches no parameter, applying does.
#pragma once

#include "core/base/parameters.h"

#include <pugixml.hpp>

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <span>

namespace vlt {

struct ParkingSetting {
    Parameter* parameter;
    bool orDefault = false;    // a file that doesn't tell it means its default
    bool onlyIfSet = false;    // a negative value, which means none, isn't written
    const char* written = {};  // stands in the file in place of its value
};

inline constexpr size_t kParkingSettingCount = 10;
extern const std::array<ParkingSetting, kParkingSettingCount> kParkingSettings;

// A setting is the user's, made while this airport was loaded: its learned file is to keep it.
extern std::atomic<bool> parkingChanged;  // [atomic] commands set, the save of the file clears

// What a file tells of them, in the order of the table; switches as 0 and 1.
using ParkingSettings = std::array<std::optional<int32_t>, kParkingSettingCount>;

// The settings of a document, clamped to their ranges.
ParkingSettings gf_readParkingSettings(const pugi::xml_document& document);
// Appends the settings in force to a file's list of parameters.
void gf_writeParkingSettings(pugi::xml_node& parameters);

// Puts a learned file's settings in force, each with a log line.
void gf_applyParkingSettings(const ParkingSettings& settings);

// Keeps the values that the user has before a load changes them,
void gf_keepUsersSettings();
// and those that the load has put in their place.
void gf_keepAirportsSettings();
// The user has changed one of them since.
bool gf_airportsSettingsChanged();
// Puts back what was kept, if anything was, but for what was changed since the load: that is the user's own.
void gf_takeUsersSettingsBack();

}  // namespace vlt
