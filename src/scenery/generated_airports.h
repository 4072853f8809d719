// What a scenery scan makes of each airport: a link to the server's archive, or a generated file.
//
// Worker thread. All is made in a folder beside the present results and takes their place in the end.
#pragma once

#include "airports/airports.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vlt {

inline constexpr std::string_view kUnknownPublisher = "unknown";
inline constexpr std::string_view kSimaddon = "simaddon";

// What the archive's file of an airport tells.
struct ArchivedAirportInfo {
    size_t stands = 0;
    int32_t qualityReal = -1;
    int32_t trafficWeek = 0;
};

// An airport that the archive knows.
struct LinkedAirport {
    std::string publisher;
    std::optional<ArchivedAirportInfo> archived;  // none: the server hasn't given it
};

// A scan on its way.
struct AirportScan {
    std::vector<std::string> told;                // lines of AirportsScanLog.txt
    std::vector<std::string> stock;               // lines of StockAirportsLog.txt
    std::map<std::string, LinkedAirport> linked;  // by code
    std::map<std::string, size_t> generated;      // number of stands, by path
    bool unwritten = false;                       // a file that belongs to it could not be
    int64_t airports = 0;                         // found so far
    int32_t serverFailures = 0;                   // in a row
};

// Logs a line, and keeps it for the scan's own log.
void gf_tell(AirportScan& scan, std::string line);

// Makes the empty folders for new results; removes what a scan that was ended has left.
void gf_beginResults();
// Puts the new results in the place of the old ones. False, with the cause in the log and all as before, when
// that fails.
bool gf_placeResults();
// Removes the new results.
void gf_dropResults();
// After a program end in the middle of a scan: what it made goes, and the old results come back.
void gf_recoverResults();

// Links the airport to its file in the archive when there is one. The number of stands in that file, if
// known; none when the airport isn't linked: it is to be generated.
struct LinkOutcome {
    bool linked = false;
    std::optional<size_t> archivedStands;
};
LinkOutcome linkOrGenerate(const Apf& apf, AirportScan& scan);

// Writes the airport's file, unless the scan has made one with more stands for the same code, or it has none.
void generateAirport(Apf apf, AirportScan& scan);

// What the server's archive has under the path; none when it can't be had.
std::optional<ArchivedAirportInfo> gf_archivedInfo(const std::string& path, AirportScan& scan);
std::string gf_archivePath(std::string_view publisher, std::string_view code);

}  // namespace vlt
