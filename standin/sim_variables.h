// The simulator's variables, and the data definitions that a client builds out of them.
//
// Stateless but for the tables in the code; used under the virtual simulator's lock.
#pragma once

#include "sim/wire/packets.h"
#include "standin/packet_writer.h"
#include "standin/sim_object.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vlt {

enum class SimVariable {
    Field,  // a number that stands in SimObject
    AltAboveGround,
    GroundAltitude,
    OnGround,
    ZuluTime,
    ZuluDayOfYear,
    ZuluYear,
    LightStates,
    StaticCg,
    StaticPitch,
    AtcId,
    AtcModel,
    Title,
};

// One entry of a data definition.
struct DefinitionEntry {
    SimVariable variable = SimVariable::Field;
    double SimObject::*field = nullptr;  // of SimVariable::Field
    double factor = 1;                   // from the variable's own unit to the client's
    SimDataType type = SimDataType::Float64;
    bool writable = false;  // by clients
};

using DataDefinition = std::vector<DefinitionEntry>;

// Everything a value may depend on.
struct VariableSource {
    const SimObject& object;
    double groundElevation = 0;  // feet, below the object
    int64_t zulu = 0;            // seconds since 1970
};

// The entry that a client asks for; none if the variable or the unit isn't known, or the type can't
// hold it: a text in a number's type or the other way round.
std::optional<DefinitionEntry> gf_definitionEntry(std::string_view name, std::string_view unit,
                                                  uint32_t type);

// Appends the values of all entries, packed.
void gf_writeValues(PacketWriter& writer, const DataDefinition& definition, const VariableSource& source);

// The values of a packet for a definition of numbers, in the variables' own units. Throws
// std::out_of_range if the data are shorter than the definition.
std::vector<double> gf_readValues(PacketReader& reader, const DataDefinition& definition);

// Puts a finite value into an object. False if clients can't write the variable.
bool gf_setVariable(SimObject& object, const DefinitionEntry& entry, double value);

}  // namespace vlt
