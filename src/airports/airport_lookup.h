// Where an airport's file lies: in the user's folders or in the server's archive.
//
// Worker thread; no state. A lookup never waits for the server: what it says is awaited may be asked anew.
#pragma once

#include "airports/server_files.h"
#include "traffic/geodesy.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vlt {

// Farther than any airport of interest: no stand was found.
inline constexpr double kNoStandNearNm = 100.0;

// An airport's file. A path that begins with "airports" is local, anything else one on the server.
struct AirportSource {
    std::string path;   // empty: there is none
    ServerFile served;  // of a path on the server
};

// The best airport file for a code: the user's own scenery first, then the server's archive. Throws
// std::filesystem::filesystem_error when a folder can't be looked into.
AirportSource findAirportFile(const std::string& code);

// The path begins with "airports", so it is a file of this machine.
bool gf_isLocalPath(std::string_view path);

// Path text of the learned file that belongs to an airport file, empty for an empty `path`. Parts of it
// are in the Windows form: file calls take its native form.
std::string learnedPath(std::string_view path, std::string_view publisher);

// Where what is learned at an airport is saved, by its publisher: in the folder stock, simaddon, or that of a
// third party.
std::string gf_savedPath(std::string_view code, std::string_view publisher);

// The stand of another airport that is closest to a position.
struct ClosestStand {
    double distance = kNoStandNearNm;  // nm
    std::string id;                    // empty: none
};
// None while the server is asked for the airport's file.
std::optional<ClosestStand> gf_readDestApfForClosestStand(const std::string& code, LatLon position);

}  // namespace vlt
