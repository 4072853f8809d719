// Loading of an airport file: from its path to a stand list that is ready for parking.
//
// Worker thread. A load leaves the stand list either whole or empty.
#pragma once

#include "airports/airports.h"

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// Loads the airport file at `path`, a local path or one on the server, with the learned file that belongs
// to it, into `apf`, whose code says which airport it is. The text is empty on success, else what went
// wrong. Throws UserErrorException for a file whose elevation is missing or whose stand ids are doubled;
// `apf` then has no stands.
std::string gf_readApf(const std::string& path, Apf& apf);

// How much is known of the parking on these stands: counts, for each stand, its options, their days and
// half hours. 45 real points and more count as good.
Quality gf_qualityFactor(const std::vector<ParkPos>& stands);

// Good enough to do without inferred options.
bool gf_hasGoodQuality(const Apf& apf);

// "45" of real and soft, for people; two blanks when unknown.
std::string gf_qualityText(Quality quality);

// Lists for each stand those whose circles reach it.
void gf_findNeighbours(std::vector<ParkPos>& stands);

}  // namespace vlt
