#include "tests/support/world.h"

#include "liveries/match_index.h"
#include "standin/world.h"

#include <algorithm>
#include <iterator>

namespace vlt {

// One type: its category's set in the data base (nullptr for light ones) and its wing span.
struct KnownType {
    const char* type;
    TypeSet Dbase::*set;
    double spanM;
};

constexpr KnownType kTypes[] = {
    {"A319", &Dbase::large, 34.1},     {"A320", &Dbase::large, 34.1},
    {"A20N", &Dbase::large, 35.8},     {"A321", &Dbase::large, 34.1},
    {"B738", &Dbase::large, 35.8},     {"E190", &Dbase::large, 28.7},
    {"CRJ9", &Dbase::large, 24.9},     {"AT76", &Dbase::large, 27.1},
    {"B77W", &Dbase::heavy, 64.8},     {"A359", &Dbase::heavy, 64.8},
    {"B744", &Dbase::heavy, 64.4},     {"B763", &Dbase::heavy, 47.6},
    {"C25A", &Dbase::buzjet, 15.2},    {"C25B", &Dbase::buzjet, 16.3},
    {"GLF5", &Dbase::buzjet, 28.5},    {"EC35", &Dbase::rotorcraft, 10.2},
    {"R44", &Dbase::rotorcraft, 10.1}, {"F16", &Dbase::high_performance, 10.0},
    {"C172", nullptr, 11.0},           {"C152", nullptr, 10.2},
    {"P28A", nullptr, 10.7},           {"SR22", nullptr, 11.7},
};

constexpr const char* kAirlines[] = {"BAW", "SHT", "RYR", "AFR", "DLH", "KLM",
                                     "EZY", "FDX", "UPS", "CFE", "PVT", "ZZZ"};

struct KnownRegistration {
    const char *reg, *airl, *type, *opr;
    bool cargo;
};

constexpr KnownRegistration kRegistrations[] = {
    {"G-DBCJ", "BAW", "A319", "", false},    {"G-EUUU", "BAW", "A320", "SHT", false},
    {"PH-BXA", "KLM", "B738", "", false},    {"EI-DAC", "RYR", "B738", "", false},
    {"G-LCYJ", "BAW", "E190", "CFE", false}, {"N68077", "FDX", "B763", "", true},
    {"G-BSEY", "PVT", "C172", "", false},    {"D-HDRW", "PVT", "EC35", "", false},
};

static Livery lf_livery(const char* airline, const char* model, const char* title, const char* atcid = "",
                        bool cargo = false)
{
    return {airline, model, title, atcid, 1, cargo};
}

static std::vector<Livery> lf_smallWorld()
{
    return {
        lf_livery("BAW", "A319", "VWorld A319 British Airways"),
        lf_livery("BAW", "A319", "VWorld A319 British Airways G-DBCJ", "G-DBCJ"),
        lf_livery("BAW", "A320", "VWorld A320 British Airways"),
        lf_livery("BAW", "B77W", "VWorld B77W British Airways"),
        lf_livery("BAW", "B744", "VWorld B744 British Airways"),
        lf_livery("RYR", "B738", "VWorld B738 Ryanair"),
        lf_livery("KLM", "B738", "VWorld B738 KLM PH-BXA", "PH-BXA"),
        lf_livery("KLM", "E190", "VWorld E190 KLM"),
        lf_livery("AFR", "A320", "VWorld A320 Air France"),
        lf_livery("AFR", "A359", "VWorld A359 Air France"),
        lf_livery("DLH", "A20N", "VWorld A20N Lufthansa"),
        lf_livery("DLH", "A321", "VWorld A321 Lufthansa"),
        lf_livery("DLH", "CRJ9", "VWorld CRJ9 Lufthansa"),
        lf_livery("EZY", "A319", "FSLTL_A319_EZY"),
        lf_livery("EZY", "A320", "VWorld A320 easyJet"),
        lf_livery("FDX", "B763", "VWorld B763F FedEx", "", true),
        lf_livery("UPS", "B763", "VWorld B763F UPS", "", true),
        lf_livery("UPS", "B744", "VWorld B744F UPS", "", true),
        lf_livery("FDX", "AT76", "VWorld AT76 FedEx without the mark of a freighter"),
        lf_livery("PVT", "C172", "VWorld C172 G-BSEY", "G-BSEY"),
        lf_livery("ZZZ", "C172", "VWorld C172 white"),
        lf_livery("ZZZ", "C152", "VWorld C152 white"),
        lf_livery("PVT", "P28A", "VWorld P28A blue"),
        lf_livery("ZZZ", "C25A", "VWorld C25A white"),
        lf_livery("PVT", "GLF5", "VWorld GLF5 grey"),
        lf_livery("ZZZ", "EC35", "VWorld EC35 yellow"),
        lf_livery("PVT", "R44", "VWorld R44 red"),
        lf_livery("ZZZ", "F16", "VWorld F16 grey"),
        lf_livery("ZZZ", "A320", "VWorld A320 white"),
        lf_livery("ZZZ", "B738", "VWorld B738 white"),
        lf_livery("ZZZ", "B763", "VWorld B763F white", "", true),
    };
}

static void lf_fillDbase()
{
    constexpr double kNmPerMetre = 1 / 1852.0;
    for (const KnownType& known : kTypes) {
        dbase.aircrafts.insert(known.type);
        if (known.set != nullptr) {
            (dbase.*known.set).insert(known.type);
        }
        const double halfSpan = known.spanM / 2 * kNmPerMetre;
        dbase.halfWingspans[known.type] = halfSpan;
        dbase.largestHalfWingspan = std::max(dbase.largestHalfWingspan, halfSpan);
    }
    dbase.ICAO_airlines.insert(std::begin(kAirlines), std::end(kAirlines));
    for (const KnownRegistration& row : kRegistrations) {
        dbase.registrations[row.reg] = {row.airl, row.type, row.opr, row.cargo};
    }
    dbase.similarTypes = {{"A20N", "A319", "A320", "A321"},
                          {"C152", "C172", "P28A"},
                          {"B738", "E190"},
                          {"C25A", "C25B"},
                          {"EC35", "R44"}};
}

void gf_installLiveries(const std::vector<Livery>& installed)
{
    gf_installWorldLiveries({installed.begin(), installed.end()}, [] {
        for (const auto& [airline, models] : airlineLiveries) {
            for (const auto& [model, entries] : models) {
                for (const LiveryEntry& entry : entries) {
                    if (entry.title.starts_with("special")) {
                        specialTitles.push_back(entry.title);
                    }
                }
            }
        }
    });
}

void gf_loadSmallWorld()
{
    dbase = {};
    lf_fillDbase();
    gf_installLiveries(lf_smallWorld());
}

void gf_clearWorld()
{
    gf_clearMatchIndexes();
    liveries.clear();
    dbase = {};
    dontUseTitles.clear();
    liveriesProcessed = false;
    for (auto& installed : categoryInstalled) {
        installed = true;
    }
}

}  // namespace vlt
