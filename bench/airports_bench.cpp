// The airport rooms' budgets: loading, neighbours, the catalogue, the stand search.
#include "airports/airport_file.h"
#include "airports/catalogue.h"
#include "airports/loading.h"
#include "airports/stand_search.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/xml_file.h"
#include "liveries/liveries.h"
#include "traffic/geodesy.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vlt {

static constexpr int kStands = 400;
static constexpr int kOptions = 100;
static constexpr int kAirports = 28'000;

// Runs in a folder of its own, as the files that are read lie below the current one.
class BenchFolder
{
public:
    BenchFolder()
        : m_before(std::filesystem::current_path()),
          m_folder(std::filesystem::temp_directory_path() / format("velatra-bench-{}", ::getpid()))
    {
        std::filesystem::create_directories(m_folder / kMyThirdpartyFolder);
        std::filesystem::current_path(m_folder);
    }
    ~BenchFolder()
    {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_folder);
    }
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;

private:
    std::filesystem::path m_before;
    std::filesystem::path m_folder;
};

static StandOption lf_option(int stand, int number)
{
    StandOption option;
    option.reg = format("G-{:02}{:02}", stand % 100, number);
    option.airline = "BAW";
    option.type = "A319";
    option.callsign = format("BAW{}", stand * kOptions + number);
    option.day = number % 7 + 1;
    option.sequence = number + 1;
    for (int slot = number % 40; slot < number % 40 + 6; ++slot) {
        option.hours.set(static_cast<size_t>(slot));
    }
    return option;
}

// Rows of stands 50 m apart.
static std::vector<ParkPos> lf_stands(int options)
{
    constexpr double kSpacing = 50 / kMetresPerNm / 60;
    std::vector<ParkPos> stands;
    for (int i = 0; i < kStands; ++i) {
        ParkPos stand;
        stand.id = format("S{}", i);
        stand.index = static_cast<uint32_t>(i + 1);
        stand.lat = 51.4 + i / 20 * kSpacing;
        stand.lon = -0.4 + i % 20 * kSpacing;
        stand.radius = 25 / kMetresPerNm;
        for (int number = 0; number < options; ++number) {
            stand.options.push_back(lf_option(i, number));
        }
        stands.push_back(std::move(stand));
    }
    return stands;
}

static void lf_loadAirport(benchmark::State& state)
{
    const BenchFolder folder;
    const std::filesystem::path file = kMyThirdpartyFolder / "BENC.xml";
    Apf apf;
    apf.code = "BENC";
    apf.handmade = true;
    apf.stands = lf_stands(kOptions);
    if (!saveAirportFile(apf, file, AirportFileMode::Learned)) {
        state.SkipWithError("the file can't be written");
    }
    for (auto _ : state) {
        if (gf_readApf({file.generic_string(), {}}, "BENC").apf.stands.size() != kStands) {
            state.SkipWithError("the airport isn't loaded");
        }
    }
}
BENCHMARK(lf_loadAirport)->Name("airport/load")->Unit(benchmark::kMillisecond);

static void lf_neighbours(benchmark::State& state)
{
    std::vector<ParkPos> stands = lf_stands(0);
    for (auto _ : state) {
        gf_findNeighbours(stands);
        benchmark::DoNotOptimize(stands.front().neighbours.size());
    }
}
BENCHMARK(lf_neighbours)->Name("airport/neighbours")->Unit(benchmark::kMicrosecond);

static void lf_standAtPosition(benchmark::State& state)
{
    parkApf.stands = lf_stands(kOptions);
    LiveAc ac;
    ac.callsign = "BAW1";
    ac.radius = 20 / kMetresPerNm;
    const LatLon place = gf_placeOf(parkApf.stands[210]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(standAtPosition(place, ac, kStandReach, true));
    }
    parkApf = Apf{};
}
BENCHMARK(lf_standAtPosition)->Name("airport/stand_at_position")->Unit(benchmark::kMicrosecond);

static AirportRecord lf_airport(int number)
{
    return {format("{:05}", number), "", -60 + number % 140 + number / 140 * 0.005, -180 + number / 140 * 1.8,
            100};
}

static void lf_closestAirport(benchmark::State& state)
{
    for (int i = 0; i < kAirports; ++i) {
        airportCatalogue.push_back(lf_airport(i));
    }
    const LatLon place{airportCatalogue[kAirports / 2].lat + 0.01, airportCatalogue[kAirports / 2].lon};
    for (auto _ : state) {
        benchmark::DoNotOptimize(closestAirport(place));
    }
    airportCatalogue.clear();
}
BENCHMARK(lf_closestAirport)->Name("airport/closest")->Unit(benchmark::kMicrosecond);

static void lf_writeCatalogue()
{
    pugi::xml_document document;
    pugi::xml_node airports = document.append_child("airports");
    for (int i = 0; i < kAirports; ++i) {
        const AirportRecord airport = lf_airport(i);
        pugi::xml_node node = airports.append_child("airport");
        node.append_attribute("code").set_value(airport.code.c_str());
        node.append_attribute("iata").set_value("");
        node.append_attribute("lat").set_value(airport.lat);
        node.append_attribute("lon").set_value(airport.lon);
        node.append_attribute("alt").set_value(airport.altitude);
    }
    saveXml(document, kAirportsCatalogueFile);
}

static void lf_readCatalogue(benchmark::State& state)
{
    const BenchFolder folder;
    lf_writeCatalogue();
    for (auto _ : state) {
        airportCatalogue.clear();
        benchmark::DoNotOptimize(readAirports());
    }
    airportCatalogue.clear();
}
BENCHMARK(lf_readCatalogue)->Name("airport/catalogue")->Unit(benchmark::kMillisecond);

}  // namespace vlt
