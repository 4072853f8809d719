// The livery rooms: one match at each step of the ladder, and a start from stored results, both with
// 20,000 liveries; the start with 400,000 registrations too.
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "core/base/zip_archive.h"
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/match_index.h"
#include "liveries/matching.h"
#include "liveries/regcodes.h"
#include "liveries/scan_results.h"
#include "liveries/scrambling.h"
#include "standin/world.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <filesystem>

namespace vlt {

constexpr int kAirlines = 400;
constexpr int kTypes = 120;
constexpr int kLiveries = 20000;
constexpr int kRegistrations = 400000;
constexpr int kTypesPerGroup = 8;

// A code of `length` letters that counts up.
static std::string lf_code(int number, size_t length)
{
    std::string code(length, 'A');
    for (size_t i = length; i-- > 0; number /= 26) {
        code[i] = static_cast<char>('A' + number % 26);
    }
    return code;
}

static std::string lf_airline(int number)
{
    return lf_code(number % kAirlines, 3);
}

static std::string lf_type(int number)
{
    return lf_code(number % kTypes, 4);
}

static std::string lf_registration(int number)
{
    return format("G-{}", lf_code(number, 4));
}

static void lf_fillTypes()
{
    for (int i = 0; i < kTypes; ++i) {
        dbase.aircrafts.insert(lf_type(i));
        if (i % kTypesPerGroup == 0) {
            dbase.similarTypes.emplace_back();
        }
        dbase.similarTypes.back().push_back(lf_type(i));
        // Groups of one category each, the last quarter of the groups light.
        TypeSet* const sets[] = {&dbase.large, &dbase.heavy, &dbase.buzjet, nullptr};
        if (TypeSet* set = sets[i * 4 / kTypes]) {
            set->insert(lf_type(i));
        }
    }
    for (int i = 0; i < kAirlines; ++i) {
        dbase.ICAO_airlines.insert(lf_airline(i));
    }
}

// Every airline has the liveries of fifty neighbouring types, none of the last group; the last light
// type but those has generic ones, and the last group but one is installed under one airline only.
static std::vector<Livery> lf_installed()
{
    std::vector<Livery> all;
    const int usedTypes = kTypes - 2 * kTypesPerGroup;
    for (int i = 0; i < kLiveries; ++i) {
        const int airline = i / 50;
        all.push_back({lf_airline(airline), lf_code((airline * 7 + (i % 50) * 2) % usedTypes, 4),
                       format("VWorld livery number {:05} of an airline", i),
                       i % 3 == 0 ? lf_registration(i * 20) : "", 1, i % 11 == 0});
    }
    all.push_back({"ZZZ", lf_code(usedTypes, 4), "VWorld generic", "", 1, false});
    all.push_back({"AAA", lf_code(usedTypes + 1, 4), "VWorld only one", "", 1, false});
    return all;
}

static void lf_loadWorld()
{
    if (!airlineLiveries.empty()) {
        return;
    }
    LOG.value = false;
    dbase = {};
    lf_fillTypes();
    for (int i = 0; i < kRegistrations; ++i) {
        dbase.registrations[lf_registration(i)] = {lf_airline(i), lf_type(i),
                                                   i % 4 == 0 ? lf_airline(i + 1) : "", false};
    }
    const std::vector<Livery> installed = lf_installed();
    gf_installWorldLiveries({installed.begin(), installed.end()});
    gf_seedRandom(1);
}

static AcBase lf_aircraft(std::string airline, std::string model, std::string regcode)
{
    AcBase ac;
    ac.airline = std::move(airline);
    ac.model = std::move(model);
    ac.regcode = std::move(regcode);
    ac.category = categoryOf(ac.model);
    return ac;
}

// One aircraft that each step answers; 0: no step does. The registrations are known and operated for
// somebody, which is the longest way.
static AcBase lf_aircraftForStep(int step)
{
    const int usedTypes = kTypes - 2 * kTypesPerGroup;
    const std::string known = format("G{}", lf_code(4004, 4));  // no livery of its own
    switch (step) {
    case 1:
        return lf_aircraft("XXX", "XXXX", format("G{}", lf_code(60, 4)));
    case 2:
        return lf_aircraft(lf_airline(3), lf_code(21, 4), known);
    case 3:
        return lf_aircraft(lf_airline(3), lf_code(24, 4), known);
    case 4:
        return lf_aircraft(lf_airline(3), lf_code(usedTypes, 4), known);
    case 5:
        return lf_aircraft(lf_airline(3), lf_code(usedTypes + 1, 4), known);
    case 6:
        return lf_aircraft(lf_airline(3), lf_code(usedTypes + 2, 4), known);
    default:
        return lf_aircraft("XXX", lf_code(3, 4), known);
    }
}

static void lf_matchAtStep(benchmark::State& state)
{
    lf_loadWorld();
    const int step = static_cast<int>(state.range(0));
    AcBase ac = lf_aircraftForStep(step);
    if (gf_explainMatch(ac, false).step != step) {
        state.SkipWithError("another step answers");
        return;
    }
    for (auto _ : state) {
        matchLive(ac);
        benchmark::DoNotOptimize(ac.title);
    }
}
BENCHMARK(lf_matchAtStep)->Name("match/step")->DenseRange(0, 6);

static void lf_addList(pugi::xml_document& document, const char* section, const char* element,
                       const char* attribute, const TypeSet& codes, std::string (*scramble)(std::string_view))
{
    std::string list;
    for (const std::string& code : codes) {
        list.append(list.empty() ? "" : ",").append(scramble(code));
    }
    document.append_child(section).append_child(element).append_attribute(attribute).set_value(list.c_str());
}

static void lf_writeDbase(const std::filesystem::path& path)
{
    pugi::xml_document document;
    for (const char* const* s :
         {(const char* const[]){"aircrafts", "aircraft"}, (const char* const[]){"high_performance", "hpf"},
          (const char* const[]){"heavy", "hvy"}, (const char* const[]){"large", "lar"},
          (const char* const[]){"buzjet", "bzj"}, (const char* const[]){"rotorcraft", "rot"},
          (const char* const[]){"cargo_types", "cargo_type"}}) {
        lf_addList(document, s[0], s[1], "types", dbase.aircrafts, gf_scrambleType);
    }
    lf_addList(document, "ICAO_airlines", "ICAO", "codes", dbase.ICAO_airlines, gf_scrambleAirline);
    lf_addList(document, "cargo_operators", "ICAO", "codes", dbase.ICAO_airlines, gf_scrambleAirline);
    document.append_child("simaddonsP3D")
        .append_child("simaddonP3D")
        .append_attribute("arpts")
        .set_value("KSEA");
    pugi::xml_node rows = document.append_child("dbase");
    for (const auto& [reg, row] : dbase.registrations) {
        pugi::xml_node node = rows.append_child("db");
        node.append_attribute("reg").set_value(gf_scrambleRegcode(reg).c_str());
        node.append_attribute("airl").set_value(gf_scrambleAirline(row.airl).c_str());
        node.append_attribute("type").set_value(gf_scrambleType(row.type).c_str());
        node.append_attribute("opr").set_value(gf_scrambleAirline(row.opr).c_str());
        node.append_attribute("cargo").set_value(row.cargo ? "1" : "0");
    }
    document.save_file(path.c_str());
}

// What a start does between the download and the first aircraft.
static void lf_start(benchmark::State& state)
{
    lf_loadWorld();
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "velatra-bench";
    std::filesystem::create_directories(folder);
    const std::filesystem::path published = folder / "dbase.xml";
    const std::filesystem::path scanned = folder / "LiveriesScanned.xml";
    const std::filesystem::path fetched = folder / "temp2.xml";
    lf_writeDbase(published);
    const std::vector<Livery> installed = lf_installed();
    liveries.assign(installed.begin(), installed.end());
    writeLiveriesScanned(scanned);
    for (auto _ : state) {
        state.PauseTiming();
        gf_clearMatchIndexes();
        dbase = {};
        std::filesystem::copy_file(published, fetched, std::filesystem::copy_options::overwrite_existing);
        state.ResumeTiming();
        gf_readDbaseFile(fetched);
        readLiveriesScanned(scanned);
        buildMatchIndexes();
    }
    if (dbase.registrations.size() != kRegistrations) {
        state.SkipWithError("registrations are missing");
    }
    std::filesystem::remove_all(folder);
    gf_clearMatchIndexes();
    liveries.clear();
}
BENCHMARK(lf_start)->Name("start/stored")->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace vlt
