// Where an airport's file lies: in the user's folders or in the server's archive.
//
// Worker thread; no state. A lookup asks the server when the user's folders hold nothing.
#pragma once

#include "traffic/geodesy.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace vlt {

// Farther than any airport of interest: no stand was found.
inline constexpr double kNoStandNearNm = 100.0;

// The path of the best airport file for a code: the user's own scenery first, then the server's archive.
// One that begins with "airports" is local, anything else a path on the server; empty when there is none.
// Throws std::filesystem::filesystem_error when a folder can't be looked into.
std::string findAirportFile(const std::string& code);

// The path begins with "airports", so it is a file of this machine.
bool gf_isLocalPath(std::string_view path);

// Path text of the learned file that belongs to an airport file, empty for an empty `path`. Parts of it
// are in the Windows form: file calls take its native form.
std::string learnedPath(std::string_view path, std::string_view publisher);

// The stand of another airport that is closest to a position.
struct ClosestStand {
    double distance = kNoStandNearNm;  // nm
    std::string id;                    // empty: none
};
ClosestStand gf_readDestApfForClosestStand(const std::string& code, LatLon position);

}  // namespace vlt
