// All settings of the program: global objects, mirrored in `parameters.xml`.
//
// An object holds a setting's default, range and present value; those with a control also its place on
// the window. Each enters itself into the one list of its type, in the order of declaration, which is that of
// the file. Values may be read and changed by any thread; what changes several at once (the ranges below)
// belongs to the worker. Each change is saved at once by `saveParameter`, under parameterMutex; nothing is
// saved on exit.
#pragma once

#include "core/base/shared_text.h"
#include "core/base/shared_value.h"
#include "core/base/units.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vlt {

// Whether the parameter stands in the file, or lasts for the program's run only.
enum class Kept { InFile, InMemory };

struct Parameter {
    Parameter(std::string key, Kept where) : name(std::move(key)), kept(where) {}
    Parameter(const Parameter&) = delete;
    Parameter& operator=(const Parameter&) = delete;
    virtual ~Parameter() = default;

    const std::string name;  // the key in the file
    const Kept kept;
};

template <typename T>
struct ParameterOf;

// All parameters of a type, in the order of their declaration.
template <typename T>
std::vector<ParameterOf<T>*>& gf_parameters()
{
    static std::vector<ParameterOf<T>*> list;
    return list;
}

template <typename T>
struct ParameterOf : Parameter {
    using Value = std::conditional_t<std::is_same_v<T, std::string>, SharedText, SharedValue<T>>;
    ParameterOf(std::string key, T initial, Kept where = Kept::InFile)
        : ParameterOf(std::move(key), initial, initial, initial, where)
    {
    }
    ParameterOf(std::string key, T initial, T lowest, T highest, Kept where = Kept::InFile)
        : Parameter(std::move(key), where), def(initial), min(lowest), max(highest), value(initial)
    {
        gf_parameters<T>().push_back(this);
    }
    T def;
    T min;  // no meaning for switches and texts
    T max;
    Value value;
};

// Where a parameter's control stands on the window.
struct Control {
    uint16_t id = 0;  // control id
    int32_t y = 0;    // the row's place on the window, pixels
};

using BoolParameter = ParameterOf<bool>;
using IntParameter = ParameterOf<int32_t>;
using StringParameter = ParameterOf<std::string>;

template <typename T>
struct ControlParameter : ParameterOf<T>, Control {
    ControlParameter(std::string key, T initial, Control place, Kept where = Kept::InFile)
        : ParameterOf<T>(std::move(key), initial, where), Control(place)
    {
    }
    ControlParameter(std::string key, T initial, T lowest, T highest, Control place,
                     Kept where = Kept::InFile)
        : ParameterOf<T>(std::move(key), initial, lowest, highest, where), Control(place)
    {
    }
};

using Checkbox = ControlParameter<bool>;
using IntTextbox = ControlParameter<int32_t>;
using FloatTextbox = ControlParameter<float>;
using StringTextbox = ControlParameter<std::string>;

struct Button : Parameter, Control {
    Button(std::string key, Control place) : Parameter(std::move(key), Kept::InMemory), Control(place) {}
};

// clang-format off
// Hidden: in the file only.
inline BoolParameter   RANDOM                   {"RANDOM", true};  // random choice among liveries
inline IntParameter    CUSTOM_PARKING_PERCENTAGE{"CUSTOM_PARKING_PERCENTAGE", -1, -1, 100};  // -1 the airports' own
inline IntParameter    MAIN_WINDOW_X            {"MAIN_WINDOW_X", 400, -30000, 30000};  // pixels
inline IntParameter    MAIN_WINDOW_Y            {"MAIN_WINDOW_Y",  20, -30000, 30000};  // pixels
inline IntParameter    LAST_EPOCH_TIME          {"LAST_EPOCH_TIME", 0, 0, 2147483647};  // stored only
inline IntParameter    HOLDING_THRESHOLD_METERS {"HOLDING_THRESHOLD_METERS", 250, 10, 4000};
inline IntParameter    MAX_HOLDING_MINUTES      {"MAX_HOLDING_MINUTES", 20, 1, 60};
inline IntParameter    P3D_VERSION              {"P3D_VERSION", 5, 5, 6};  // where the path doesn't tell
inline StringParameter PROGRAM_VERSION          {"PROGRAM_VERSION", ""};  // of the last start
inline StringParameter PROGRAM_INSTALL_PATH     {"PROGRAM_INSTALL_PATH", ""};
inline StringParameter SIM_INSTALL_PATH         {"SIM_INSTALL_PATH", ""};
inline StringParameter PORT_NUMBER              {"PORT_NUMBER", "10747"};  // of the position server
inline StringParameter lfolders[10] = {  // extra livery folders, in order of priority
    {"lfolder0", ""}, {"lfolder1", ""}, {"lfolder2", ""}, {"lfolder3", ""}, {"lfolder4", ""},
    {"lfolder5", ""}, {"lfolder6", ""}, {"lfolder7", ""}, {"lfolder8", ""}, {"lfolder9", ""}};
inline StringParameter afolders[10] = {  // extra airport folders
    {"afolder0", ""}, {"afolder1", ""}, {"afolder2", ""}, {"afolder3", ""}, {"afolder4", ""},
    {"afolder5", ""}, {"afolder6", ""}, {"afolder7", ""}, {"afolder8", ""}, {"afolder9", ""}};

// Switches with a check box.                                          id     y
inline Checkbox ALWAYS_ON_TOP            {"ALWAYS_ON_TOP",             false, {32771, 147}};  // the window stays above others
inline Checkbox GUID_CHANGES             {"GUID_CHANGES",              true,  {32773, 203}};  // respawn for a better livery
inline Checkbox AEROWINX                 {"AEROWINX",                  false, {32775, 203}};  // PSX serves RealTraffic, not we
inline Checkbox LEARN_SOFT               {"LEARN_SOFT",                true,  {32777, 175}};  // learn soft stands
inline Checkbox NAV_LIGHTS_WHILE_PARKED  {"NAV_LIGHTS_WHILE_PARKED",   true,  {32778, 175}};  // parked aircraft show them
inline Checkbox LOG                      {"LOG",                       true,  {32779, 147}};  // the more talkative log lines
inline Checkbox SCAN_LIVERIES            {"SCAN_LIVERIES",             true,  {32797, 147}};  // at the next start
inline Checkbox LIG_AUTOMATIC            {"LIG_AUTOMATIC",             true,  {32798, 147}};  // find the livery folders
inline Checkbox LIG_PRIORITIZE           {"LIG_PRIORITIZE",            false, {32799, 147}};  // earlier lfolders win
inline Checkbox SUPPRESS_STUB            {"SUPPRESS_STUB",             true,  {32801, 147}};  // stored, read by no scan rule
inline Checkbox SCAN_AIRPORTS            {"SCAN_AIRPORTS",             true,  {32802, 175}};  // at the next start
inline Checkbox AFG_AUTOMATIC            {"AFG_AUTOMATIC",             true,  {32803, 175}};  // find the scenery list
inline Checkbox LIGHT_AIRCRAFT           {"LIGHT_AIRCRAFT",            true,  {32809, 203}};  // accept this category
inline Checkbox HELICOPTERS              {"HELICOPTERS",               true,  {32810, 203}};  // accept this category
inline Checkbox HIGH_PERF_AIRCRAFT       {"HIGH_PERF_AIRCRAFT",        true,  {32811, 203}};  // accept this category
inline Checkbox AUTO_RANGE               {"AUTO_RANGE",                true,  {32819, 231}};  // LATERAL_RANGE by flight phase
inline Checkbox COLLISION_USER_AIR       {"COLLISION_USER_AIR",        true,  {32833, 287}};
inline Checkbox COLLISION_USER_GND       {"COLLISION_USER_GND",        true,  {32834, 287}};
inline Checkbox COLLISION_LIVE_PARKED_GND{"COLLISION_LIVE_PARKED_GND", false, {32835, 287}};
inline Checkbox INITIAL_LOAD_ONLY        {"INITIAL_LOAD_ONLY",         false, {32850, 371}};  // no renewal of static aircraft
inline Checkbox PARK_SOFT                {"PARK_SOFT",                 true,  {32851, 371}};  // static parking on soft stands
inline Checkbox PARK_FAKE                {"PARK_FAKE",                 false, {32852, 371}};  // fill with the fake set
inline Checkbox WEEK                     {"WEEK",                      false, {32854, 371}};  // look at the whole week
inline Checkbox STRAIGHT_PBS_ONLY        {"STRAIGHT_PBS_ONLY",         false, {32856, 315}};  // push-backs without a turn

// Whole numbers with a text box.                             default   min    max     id     y
inline IntTextbox MATCHING_DEPTH          {"MATCHING_DEPTH",           4,     1,     4, {32808, 203}};  // steps of the ladder
inline IntTextbox LATERAL_RANGE           {"LATERAL_RANGE",           40,     2,   100, {32818, 231}};  // nm
inline IntTextbox AUTO_RANGE_ABOVE_HEIGHT {"AUTO_RANGE_ABOVE_HEIGHT", 49000, 18000, 49000, {32820, 231}};  // feet
inline IntTextbox MAX_LIVE                {"MAX_LIVE",                -1,    -1,   300, {32821, 315}};  // -1 no limit
inline IntTextbox AIRPORT_RANGE           {"AIRPORT_RANGE",           20,     8,    30, {32841, 343}};  // nm
inline IntTextbox AIRPORT_HEIGHT          {"AIRPORT_HEIGHT",          18000, 2000, 45000, {32842, 343}};  // feet
inline IntTextbox parking_percentage      {"parking_percentage",      30,     0,   100, {32848, 371}, Kept::InMemory};  // the airport's
inline IntTextbox MAX_FIT                 {"MAX_FIT",                 47,     0,    47, {32853, 371}};  // half-hour steps
inline IntTextbox CUSTOM_MAX_PARK         {"CUSTOM_MAX_PARK",         -1,    -1,   500, {32865, 315}};  // -1 no limit

// Other parameters with a control.
inline FloatTextbox  MAX_FIT_FL       {"MAX_FIT_FL", 24.0F, 0.5F, 24.0F, {32855, 371}, Kept::InMemory};  // hours of MAX_FIT
inline StringTextbox ALL_INSTALL_PATH {"ALL_INSTALL_PATH", "", {32788, 119}, Kept::InMemory};  // SIM_INSTALL_PATH as shown
inline StringTextbox BLOCK_CALLSIGN   {"BLOCK_CALLSIGN",   "", {32828, 259}};  // emptied at each run's end
inline StringTextbox DESTINATION      {"DESTINATION",      "", {32840, 343}};  // emptied at each run's end
inline Button        UNBLOCK          {"Unblock",      {32829, 257}};
inline Button        FLUSH_STATIC     {"Flush static", {32858, 369}};
inline Button        RE_READ          {"Re-read",      {32838, 341}};
// clang-format on

// Follow LATERAL_RANGE.
inline SharedValue<double> lateralRangeNm = 40.0;
inline SharedValue<int32_t> lateralRangeMetres = 40 * static_cast<int32_t>(kMetresPerNm);

// Forces LATERAL_RANGE into its range and brings the two values that follow it up to date.
void gf_applyLateralRange();

// LATERAL_RANGE as it was before AUTO_RANGE took it over.
inline SharedValue<int32_t> rangeBeforeAuto = 40;

// LATERAL_RANGE takes the automatic range, unless that has been switched off meanwhile.
void gf_takeAutomaticRange(int32_t rangeNm);

// Sets AUTO_RANGE. On keeps LATERAL_RANGE as the value to go back to, off goes back to it; a switch that
// stands that way already stays as it is.
void gf_switchAutoRange(bool on);

// MAX_FIT_FL from MAX_FIT.
void gf_applyMaxFit();

// Reads all parameters from `parameters.xml`, on the worker at each run's start: values are clamped,
// missing ones added with their default, a missing or unreadable file is made anew. A version newer than
// the stored one switches both scans on. The text is what the user should read about it, mostly empty.
std::string readParameters();

// Just MAIN_WINDOW_X and MAIN_WINDOW_Y, for the window's creation before the first run. A value on the
// border of its range is replaced by the default, which is saved.
void gf_readWindowPlace();

// Store one parameter's value in the file at once. A failure is logged, and the object keeps its value.
void saveParameter(const BoolParameter& p);
void saveParameter(const IntParameter& p);
void saveParameter(const StringParameter& p);

// The parameter names one of the extra folders, which leave no empty lines in the file.
bool isFolderParameter(std::string_view name);

}  // namespace vlt
