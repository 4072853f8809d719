// Any bytes as an aircraft.cfg, of both flavours, beside a whole model and texture. What comes out must be
// usable: a title, a known model, a valid airline; each time the same.
#include "fuzz/seeds.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/cfg_text.h"
#include "liveries/database.h"
#include "standin/livery_tree.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <unistd.h>

using namespace vlt;
namespace fs = std::filesystem;

static fs::path lf_home()
{
    static const fs::path home = fs::temp_directory_path() / ("velatra-fuzz-" + std::to_string(::getpid()));
    return home;
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    dbase.aircrafts = {"A320", "C172", "B744"};
    dbase.fixes = {{"A32N", "A320"}};
    dbase.large = {"A320"};
    dbase.ICAO_airlines = {"KLM", "BAW", "ZZZ"};
    dbase.registrations["PH-BXA"] = {"KLM", "A320", "", false};
    fs::create_directories(lf_home() / "model");
    fs::create_directories(lf_home() / "texture");
    std::ofstream(lf_home() / "model" / ".air");
    std::atexit([] { fs::remove_all(lf_home()); });
    const fs::path tree = lf_home() / "tree";
    gf_writeLiveryTree(VELATRA_SOURCE_DIR "/data/world", tree);
    int count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(tree)) {
        if (entry.is_regular_file() && entry.file_size() < 4000 && entry.path().extension() != ".air" &&
            ++count < 30) {
            std::ifstream in(entry.path(), std::ios::binary);
            gf_seed(*argc, *argv, std::to_string(count), {std::istreambuf_iterator<char>(in), {}});
        }
    }
    fs::remove_all(tree);
    gf_seed(*argc, *argv, "own",
            "[fltsim.0]\ntitle=KLM \"a\"\natc_parking_codes=KLMX\natc_id=PH-BXA ; "
            "x\n[General]\natc_model=A32N\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text = gf_cfgTextOf({reinterpret_cast<const char*>(data), size});
    for (const bool ivao : {false, true}) {
        const CfgPlace place{lf_home() / "aircraft.cfg", "C:\\IVAO_MTL\\IVAO_A320\\aircraft.cfg"};
        const CfgScan scan = gf_scanCfgText(1, place, text, ivao);
        for (const ScannedLivery& found : scan.found) {
            gf_require(!found.livery.title.empty() && isValidModel(found.livery.model));
            gf_require(isValidAirline(found.livery.airline) || found.livery.airline == kPrivateAirline);
        }
        gf_require(gf_scanCfgText(1, place, text, ivao).found.size() == scan.found.size());
    }
    return 0;
}
