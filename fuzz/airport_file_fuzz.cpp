// Any bytes as an airport file and as the learned file that belongs to it. A load must give a whole stand
// list or none, with numbers that can be, and what is saved must read the same again.
#include "airports/airport_file.h"
#include "airports/loading.h"
#include "core/base/errors.h"
#include "core/base/paths.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace vlt;

static const std::filesystem::path kFile = kMyThirdpartyFolder / "FUZZ.xml";
static const std::filesystem::path kLearned = kLearnedFolder / "thirdparty/unknown/FUZZ.xml";

static void lf_prepareOnce()
{
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() / ("velatra-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(path / kMyThirdpartyFolder);
        std::filesystem::create_directories(path / kLearned.parent_path());
        ::setenv("VELATRA_SERVER", "http://127.0.0.1:1/", 1);
        std::filesystem::current_path(path);
        std::atexit([] { std::filesystem::remove_all(std::filesystem::current_path()); });
        return path;
    }();
}

static void lf_write(const std::filesystem::path& path, const uint8_t* data, size_t size)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

static void lf_require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

static void lf_checkStands(const std::vector<ParkPos>& stands)
{
    uint32_t index = 0;
    for (const ParkPos& stand : stands) {
        lf_require(stand.index == ++index);
        lf_require(std::abs(stand.lat) <= 90 && std::abs(stand.lon) <= 180 && std::isfinite(stand.heading));
        lf_require(stand.radius >= 0 && std::isfinite(stand.radius));
        for (const uint32_t neighbour : stand.neighbours) {
            lf_require(neighbour >= 1 && neighbour <= stands.size() && neighbour != index);
        }
    }
}

// A stand so close to 0/0 that six decimals turn it into no position.
static bool lf_vanishesOnPaper(const ParkPos& stand)
{
    return std::abs(stand.lat) < 1e-6 && std::abs(stand.lon) < 1e-6;
}

static void lf_checkRoundTrip(Apf& apf)
{
    std::erase_if(apf.stands, lf_vanishesOnPaper);
    apf.handmade = true;
    lf_require(saveAirportFile(apf, "saved.xml", AirportFileMode::Learned));
    pugi::xml_document document;
    std::vector<ParkPos> stands;
    lf_require(document.load_file("saved.xml"));
    gf_readParkPositions(document, stands);
    lf_require(stands.size() == apf.stands.size());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    lf_prepareOnce();
    lf_write(kFile, data, size);
    lf_write(kLearned, data, size);
    AirportLoad load = gf_readApf({kFile.generic_string(), {}}, "FUZZ");
    Apf& apf = load.apf;
    const bool loaded = load.failed.empty();
    lf_require(loaded == !apf.stands.empty());
    lf_checkStands(apf.stands);
    if (loaded) {
        lf_checkRoundTrip(apf);
    }
    return 0;
}
