// The scans of what the user has installed, beside what merely reading the same files costs. All files are in
// the system's cache: every benchmark has run once before it is measured.
#include "core/base/ordered_tasks.h"
#include "core/base/text.h"
#include "liveries/livery_search.h"
#include "scenery/bgl.h"
#include "standin/bgl_writer.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vlt {

namespace fs = std::filesystem;

constexpr int kAircraft = 2000;
constexpr int kLiveriesEach = 10;
constexpr int kSceneryFiles = 5000;
constexpr int kAirportFiles = 200;

static void lf_write(const fs::path& path, const std::string& text)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

static std::string lf_aircraft(int number)
{
    std::string text;
    for (int i = 0; i < kLiveriesEach; ++i) {
        text += format(
            "[fltsim.{0}]\r\ntitle=A {1} livery "
            "{0}\r\nsim=AI\r\nmodel=\r\npanel=\r\nsound=\r\ntexture={0}\r\n"
            "kb_checklists=\r\nkb_reference=\r\natc_airline=AIRLINE\r\natc_id=\r\natc_parking_types=GATE\r\n"
            "atc_parking_codes=BAW\r\nui_manufacturer=Somebody\r\nui_type=A320\r\n"
            "ui_variation=Variation {0}\r\ndescription=An aircraft with a livery\r\n\r\n",
            i, number);
    }
    return text + "[General]\r\natc_type=AIRBUS\r\natc_model=A320\r\n" + std::string(2000, ';') + "\r\n";
}

static std::string lf_scenery(bool airports)
{
    BglAirportPlan plan{"EHAM", 3, false, {"An airport"}, {}, {}};
    for (int i = 0; i < 100; ++i) {
        plan.parkings.push_back({format("g{}", i), 9, 30, 1, 47 + i * 0.001, 11, {}});
    }
    // What a scenery has beside its stands, taxiways most of all, is many times their size.
    const std::string others(airports ? 60000 : 8000, 'x');
    return gf_bglFile(airports ? std::vector{plan} : std::vector<BglAirportPlan>()) + others;
}

// The user's installation, made once and removed at the end.
static const fs::path& lf_home()
{
    static const fs::path home = [] {
        fs::path path = fs::temp_directory_path() / ("velatra-bench-" + std::to_string(::getpid()));
        for (int i = 0; i < kAircraft; ++i) {
            const fs::path plane = path / "planes" / format("plane {}", i);
            lf_write(plane / "aircraft.cfg", lf_aircraft(i));
            lf_write(plane / "model" / "AI.air", "x");
            for (int texture = 0; texture < kLiveriesEach; ++texture) {
                fs::create_directories(plane / format("texture.{}", texture));
            }
        }
        for (int i = 0; i < kSceneryFiles; ++i) {
            const bool airports = i < kAirportFiles;
            lf_write(path / (airports ? "airports" : "others") / format("{}.bgl", i), lf_scenery(airports));
        }
        std::atexit([] { fs::remove_all(lf_home()); });
        return path;
    }();
    return home;
}

static std::vector<fs::path> lf_sceneryFiles(const char* folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(lf_home() / folder)) {
        files.push_back(entry.path());
    }
    return files;
}

static void lf_cat(benchmark::State& state, const std::string& files)
{
    const std::string command = format("cd '{}' && cat {} > /dev/null", lf_home().string(), files);
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("cat");
        }
    }
}

static void lf_scanLiveries(benchmark::State& state)
{
    const std::string planes = (lf_home() / "planes").string();
    dbase.aircrafts.insert("A320");
    dbase.ICAO_airlines.insert("BAW");
    for (auto _ : state) {
        liveries.clear();
        LiveryScanLists lists;
        ScanProgress progress("liveries");
        int32_t folder = 0;
        gf_searchListEntry(planes, folder, lists, progress);
    }
    if (liveries.size() != kAircraft * kLiveriesEach) {
        state.SkipWithError("not all liveries were found");
    }
    liveries.clear();
}
BENCHMARK(lf_scanLiveries)->Name("scan/liveries")->Unit(benchmark::kMillisecond)->UseRealTime();

static void lf_catCfgs(benchmark::State& state)
{
    lf_cat(state, "planes/*/aircraft.cfg");
}
BENCHMARK(lf_catCfgs)->Name("scan/cat_liveries")->Unit(benchmark::kMillisecond)->UseRealTime();

// Most of the folders are textures, in which nothing is; a scan must look into them all the same.
static void lf_findLiveries(benchmark::State& state)
{
    const std::string command = format("find '{}' -name aircraft.cfg -print0 | xargs -0 cat > /dev/null",
                                       (lf_home() / "planes").string());
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("find");
        }
    }
}
BENCHMARK(lf_findLiveries)->Name("scan/find_liveries")->Unit(benchmark::kMillisecond)->UseRealTime();

static void lf_holds(benchmark::State& state)
{
    std::vector<fs::path> files = lf_sceneryFiles("others");
    for (auto _ : state) {
        int found = 0;
        for (const fs::path& file : files) {
            found += holdsAirports(file) ? 1 : 0;
        }
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(lf_holds)->Name("scan/holds_airports")->Unit(benchmark::kMillisecond);

static void lf_openAndRead(benchmark::State& state)
{
    std::array<char, 4096> head{};
    const std::vector<fs::path> files = lf_sceneryFiles("others");
    for (auto _ : state) {
        for (const fs::path& file : files) {
            const int handle = ::open(file.c_str(), O_RDONLY);
            benchmark::DoNotOptimize(::read(handle, head.data(), head.size()));
            ::close(handle);
        }
    }
}
BENCHMARK(lf_openAndRead)->Name("scan/open_and_read")->Unit(benchmark::kMillisecond);

static void lf_decode(benchmark::State& state)
{
    const std::vector<fs::path> files = lf_sceneryFiles("airports");
    for (auto _ : state) {
        size_t airports = 0;
        gf_resultsInOrder(
            files.size(), [&files](size_t i) { return decodeBglFile(files[i], "x"); },
            [&airports](size_t, const BglFile& file) { airports += file.airports.size(); });
        if (airports != kAirportFiles) {
            state.SkipWithError("not all airports were found");
        }
    }
}
BENCHMARK(lf_decode)->Name("scan/decode")->Unit(benchmark::kMillisecond)->UseRealTime();

static void lf_catSceneries(benchmark::State& state)
{
    lf_cat(state, "airports/*.bgl");
}
BENCHMARK(lf_catSceneries)->Name("scan/cat_sceneries")->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace vlt
