// Any bytes as my_park_airports.txt. Whatever is read must be airports of the catalogue, each once, and
// storing a stand must keep the others.
#include "airports/catalogue.h"
#include "airports/parking/park_list.h"
#include "core/base/paths.h"
#include "core/base/text_files.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

using namespace vlt;

static void lf_prepareOnce()
{
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() / ("velatra-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(path / kMyThirdpartyFolder);
        std::filesystem::current_path(path);
        for (const char* code : {"A", "EGLL", "EHAM", "LFBO"}) {
            airportCatalogue.push_back({code, "", 50, 1, 0});
        }
        std::atexit([] { std::filesystem::remove_all(std::filesystem::current_path()); });
        return path;
    }();
}

static std::set<std::string> lf_codes()
{
    std::set<std::string> codes;
    for (const ParkListEntry& entry : parkAirports) {
        if (findAirport(entry.code) == nullptr || !codes.insert(entry.code).second) {
            std::abort();
        }
    }
    return codes;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    lf_prepareOnce();
    std::ofstream(kMyParkAirportsFile, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    lf_readMyParkAirports();
    const std::set<std::string> before = lf_codes();
    const bool readable = readExtTextFile(kMyParkAirportsFile).whole;
    gf_storeStand("A1");
    lf_readMyParkAirports();
    const bool stored = parkAirports.empty() || parkAirports.front().stand == "A1";
    if (lf_codes() != before || (readable && !stored)) {
        std::abort();
    }
    return 0;
}
