#include "standin/sim_variables.h"

#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <array>
#include <chrono>
#include <cmath>
#include <string>

namespace vlt {

enum class Unit { Text, Degree, Radian, Feet, FeetPerSecond, Knots, Percent, Seconds, Number, Mask, Bool };

struct VariableRow {
    std::string_view name;  // in capitals
    SimVariable variable;
    Unit unit;  // its own
    double SimObject::*field;
    bool writable;
};

using V = SimVariable;
using U = Unit;
using O = SimObject;

// clang-format off
constexpr std::array<VariableRow, 25> kVariables{{
    {"PLANE LATITUDE",                        V::Field,          U::Degree,        &O::lat,           true},
    {"PLANE LONGITUDE",                       V::Field,          U::Degree,        &O::lon,           true},
    {"PLANE PITCH DEGREES",                   V::Field,          U::Radian,        &O::pitch,         true},
    {"PLANE BANK DEGREES",                    V::Field,          U::Radian,        &O::bank,          true},
    {"PLANE HEADING DEGREES TRUE",            V::Field,          U::Radian,        &O::heading,       true},
    {"PLANE ALTITUDE",                        V::Field,          U::Feet,          &O::altitude,      true},
    {"VERTICAL SPEED",                        V::Field,          U::FeetPerSecond, &O::verticalSpeed, true},
    {"AIRSPEED TRUE",                         V::Field,          U::Knots,         &O::tas,           true},
    {"GROUND VELOCITY",                       V::Field,          U::Knots,         &O::tas,           false},
    {"SPOILERS HANDLE POSITION",              V::Field,          U::Percent,       &O::spoilers,      true},
    {"GENERAL ENG THROTTLE LEVER POSITION:1", V::Field,          U::Percent,       &O::throttle1,     true},
    {"GENERAL ENG THROTTLE LEVER POSITION:2", V::Field,          U::Percent,       &O::throttle2,     true},
    {"PLANE ALT ABOVE GROUND",                V::AltAboveGround, U::Feet,          nullptr,           false},
    {"GROUND ALTITUDE",                       V::GroundAltitude, U::Feet,          nullptr,           false},
    {"SIM ON GROUND",                         V::OnGround,       U::Bool,          nullptr,           false},
    {"ZULU TIME",                             V::ZuluTime,       U::Seconds,       nullptr,           false},
    {"ZULU DAY OF YEAR",                      V::ZuluDayOfYear,  U::Number,        nullptr,           false},
    {"ZULU YEAR",                             V::ZuluYear,       U::Number,        nullptr,           false},
    {"LIGHT STATES",                          V::LightStates,    U::Mask,          nullptr,           false},
    {"LIGHT ON STATES",                       V::LightStates,    U::Mask,          nullptr,           true},
    {"STATIC CG TO GROUND",                   V::StaticCg,       U::Feet,          nullptr,           false},
    {"STATIC PITCH",                          V::StaticPitch,    U::Radian,        nullptr,           false},
    {"ATC ID",                                V::AtcId,          U::Text,          nullptr,           false},
    {"ATC MODEL",                             V::AtcModel,       U::Text,          nullptr,           false},
    {"TITLE",                                 V::Title,          U::Text,          nullptr,           false},
}};

struct UnitRow { std::string_view name; Unit unit; };
constexpr std::array<UnitRow, 15> kUnits{{
    {"", Unit::Text}, {"DEGREE", Unit::Degree}, {"DEGREES", Unit::Degree}, {"RADIAN", Unit::Radian},
    {"RADIANS", Unit::Radian}, {"FEET", Unit::Feet}, {"FOOT", Unit::Feet},
    {"FEET PER SECOND", Unit::FeetPerSecond}, {"KNOTS", Unit::Knots}, {"KNOT", Unit::Knots},
    {"PERCENT", Unit::Percent}, {"SECONDS", Unit::Seconds}, {"NUMBER", Unit::Number},
    {"MASK", Unit::Mask}, {"BOOL", Unit::Bool},
}};
// clang-format on

static bool lf_isTextType(SimDataType type)
{
    return type >= SimDataType::String8 && type <= SimDataType::StringV;
}

// From a variable's own unit to the client's; none if one can't be turned into the other.
static std::optional<double> lf_factor(Unit own, std::string_view wanted)
{
    const std::string name = gf_upperCase(wanted);
    for (const UnitRow& row : kUnits) {
        if (row.name != name) {
            continue;
        }
        if (row.unit == own) {
            return 1.0;
        }
        if (own == Unit::Degree && row.unit == Unit::Radian) {
            return kRadPerDeg;
        }
        if (own == Unit::Radian && row.unit == Unit::Degree) {
            return kDegPerRad;
        }
    }
    return std::nullopt;
}

std::optional<DefinitionEntry> gf_definitionEntry(std::string_view name, std::string_view unit, uint32_t type)
{
    if (type < static_cast<uint32_t>(SimDataType::Int32) ||
        type > static_cast<uint32_t>(SimDataType::StringV)) {
        return std::nullopt;
    }
    const auto dataType = static_cast<SimDataType>(type);
    const std::string wanted = gf_upperCase(name);
    for (const VariableRow& row : kVariables) {
        if (row.name != wanted || lf_isTextType(dataType) != (row.unit == Unit::Text)) {
            continue;
        }
        if (const auto factor = lf_factor(row.unit, unit)) {
            return DefinitionEntry{row.variable, row.field, *factor, dataType, row.writable};
        }
    }
    return std::nullopt;
}

// Bytes of a value in a packet; none for types without a fixed width.
static std::optional<size_t> lf_fixedWidth(SimDataType type)
{
    switch (type) {
    case SimDataType::Int32:
    case SimDataType::Float32:
        return 4;
    case SimDataType::Int64:
    case SimDataType::Float64:
    case SimDataType::String8:
        return 8;
    case SimDataType::String32:
        return 32;
    case SimDataType::String64:
        return 64;
    case SimDataType::String128:
        return 128;
    case SimDataType::String256:
        return 256;
    case SimDataType::String260:
        return 260;
    case SimDataType::StringV:
        return std::nullopt;
    }
    return std::nullopt;
}

struct ZuluDate {
    double secondOfDay = 0;
    double dayOfYear = 0;
    double year = 0;
};

static ZuluDate lf_zuluDate(int64_t zulu)
{
    using namespace std::chrono;
    const sys_seconds time{seconds{zulu}};
    const sys_days day = floor<days>(time);
    const year_month_day date{day};
    const sys_days newYear{date.year() / January / 1};
    return {static_cast<double>((time - day).count()), static_cast<double>((day - newYear).count() + 1),
            static_cast<double>(static_cast<int>(date.year()))};
}

static double lf_number(const DefinitionEntry& entry, const VariableSource& from)
{
    const SimObject& object = from.object;
    switch (entry.variable) {
    case SimVariable::Field:
        return object.*entry.field;
    case SimVariable::AltAboveGround:
        return object.altitude - from.groundElevation;
    case SimVariable::GroundAltitude:
        return from.groundElevation;
    case SimVariable::OnGround:
        return gf_onGround(object, from.groundElevation) ? 1 : 0;
    case SimVariable::ZuluTime:
        return lf_zuluDate(from.zulu).secondOfDay;
    case SimVariable::ZuluDayOfYear:
        return lf_zuluDate(from.zulu).dayOfYear;
    case SimVariable::ZuluYear:
        return lf_zuluDate(from.zulu).year;
    case SimVariable::LightStates:
        return object.lights;
    case SimVariable::StaticCg:
        return object.kind.cgFt;
    case SimVariable::StaticPitch:
        return object.kind.staticPitch;
    case SimVariable::AtcId:
    case SimVariable::AtcModel:
    case SimVariable::Title:
        break;
    }
    return 0;
}

static const std::string& lf_text(SimVariable variable, const SimObject& object)
{
    switch (variable) {
    case SimVariable::AtcId:
        return object.tailNumber;
    case SimVariable::AtcModel:
        return object.kind.model;
    default:
        return object.kind.title;
    }
}

static void lf_writeNumber(PacketWriter& writer, SimDataType type, double value)
{
    switch (type) {
    case SimDataType::Int32:
        writer.u32(static_cast<uint32_t>(static_cast<int32_t>(std::lround(value))));
        break;
    case SimDataType::Int64:
        writer.i64(std::llround(value));
        break;
    case SimDataType::Float32:
        writer.f32(static_cast<float>(value));
        break;
    default:
        writer.f64(value);
        break;
    }
}

void gf_writeValues(PacketWriter& writer, const DataDefinition& definition, const VariableSource& source)
{
    for (const DefinitionEntry& entry : definition) {
        if (entry.type == SimDataType::StringV) {
            writer.textV(lf_text(entry.variable, source.object));
        } else if (lf_isTextType(entry.type)) {
            writer.text(lf_text(entry.variable, source.object), *lf_fixedWidth(entry.type));
        } else {
            lf_writeNumber(writer, entry.type, lf_number(entry, source) * entry.factor);
        }
    }
}

static double lf_readNumber(PacketReader& reader, SimDataType type)
{
    switch (type) {
    case SimDataType::Int32:
        return static_cast<int32_t>(reader.u32());
    case SimDataType::Int64:
        return static_cast<double>(reader.i64());
    case SimDataType::Float32:
        return static_cast<double>(reader.f32());
    case SimDataType::Float64:
        return reader.f64();
    default:
        reader.skip(lf_fixedWidth(type).value_or(0));
        return 0;
    }
}

std::vector<double> gf_readValues(PacketReader& reader, const DataDefinition& definition)
{
    std::vector<double> values;
    values.reserve(definition.size());
    for (const DefinitionEntry& entry : definition) {
        values.push_back(lf_readNumber(reader, entry.type) / entry.factor);
    }
    return values;
}

bool gf_setVariable(SimObject& object, const DefinitionEntry& entry, double value)
{
    if (!entry.writable) {
        return false;
    }
    if (entry.field) {
        object.*entry.field = value;
    } else {
        object.lights = static_cast<uint32_t>(static_cast<int64_t>(value));
    }
    return true;
}

}  // namespace vlt
