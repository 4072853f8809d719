// Loading of an airport file: from its path to a stand list that is ready for parking.
//
// Worker thread. A load changes no parameter, no table and no field of the window. On the disk it does two
// things: a file from the server is put down as airports/park_airport.xml, and a learned file that can't be
// parsed is moved aside. It leaves the stand list either whole or empty.
#pragma once

#include "airports/airport_lookup.h"
#include "airports/airports.h"
#include "airports/parking_settings.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

// What a load brings.
struct AirportLoad {
    Apf apf;               // its stands numbered, each with its neighbours
    std::string source;    // the path read from; of a handmade airport that of the learned file
    bool learned = false;  // there is a learned file
    std::optional<ParkingSettings> settings;  // with which it was saved
    std::vector<std::string> warnings;        // for the user, of files that could be read nevertheless
    std::string failed;                       // what went wrong; empty on success
};

// Loads the airport file, on the server one that has come, with the learned file that belongs to it. Whatever
// is wrong with either is told, nothing is thrown.
AirportLoad gf_readApf(const AirportSource& source, const std::string& code);

// The same from a file wherever it lies, and without a learned one.
AirportLoad gf_readApfAlone(const std::filesystem::path& file, const std::string& code);

// How much is known of the parking on these stands: counts, for each stand, its options, their days and
// half hours. 45 real points and more count as good.
Quality gf_qualityFactor(const std::vector<ParkPos>& stands);

// Good enough to do without inferred options.
bool gf_hasGoodQuality(const Apf& apf);

// "45" of real and soft, for people; two blanks when unknown.
std::string gf_qualityText(Quality quality);

// Numbers the stands and lists for each its neighbours.
void gf_numberStands(std::vector<ParkPos>& stands);

// Lists for each stand those whose circles reach it.
void gf_findNeighbours(std::vector<ParkPos>& stands);

}  // namespace vlt
