// The records and tables of the livery rooms: the data base of the real world, and what is installed.
//
// All tables are filled once by the worker before the traffic starts, and only read afterwards, except those
// marked [worker, grows] and the similar lists, whose order each query that walks them shuffles.
#pragma once

#include "core/base/text.h"
#include "core/base/units.h"
#include "traffic/category.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vlt {

inline constexpr std::string_view kPrivateAirline = "PVT";  // aircraft without an airline
inline constexpr std::string_view kGenericAirline = "ZZZ";  // liveries that fit any airline

inline constexpr double kHalfSpanNmPerMetre = 0.5 / kMetresPerNm;  // of the whole span

// What the data base knows of one registration.
struct RegRecord {
    std::string airl;    // airline code of the owner
    std::string type;    // type designator
    std::string opr;     // airline code of the operator; empty when the owner flies it
    bool cargo = false;  // flies freight
};

// Add-on airports of one publisher.
struct ThirdPartyAirports {
    std::string pub;                 // the publisher's name
    std::vector<std::string> arpts;  // airport codes
};

using TypeSet = std::set<std::string, std::less<>>;

// The data base. Its names are those of its sections.
struct Dbase {
    TypeSet aircrafts;                                           // every valid type designator
    TypeSet high_performance, heavy, large, buzjet, rotorcraft;  // types of a category
    TypeSet cargo_types;                                         // read and kept
    TypeSet ICAO_airlines;                                       // every valid airline code
    TypeSet cargo_operators;                                     // read and kept
    std::vector<std::vector<std::string>> similarTypes;          // groups of look-alikes, each sorted
    std::map<std::string, double, std::less<>> halfWingspans;    // type to half span, nm
    std::array<double, kCategoryCount> meanHalfWingspans{};      // nm, 0 for a category without a type
    double largestHalfWingspan = 0;                              // nm
    std::map<std::string, std::string, std::less<>> fixes;       // wrong model code to the right one
    std::vector<std::vector<std::string>> publishers;            // groups of names of one publisher
    TypeSet simaddonsP3D;                                        // codes of add-on airports
    std::vector<ThirdPartyAirports> thirdParties;                // in file order
    TextMap<RegRecord> registrations;                            // by registration
};
extern Dbase dbase;  // [const] filled by readDbase

// One scanned livery.
struct Livery {
    std::string airline;  // three letters, or kGenericAirline
    std::string model;    // type designator
    std::string title;    // the name by which the simulator creates it
    std::string atcid;    // registration printed on it, or empty
    int32_t folder = 0;   // number of the livery folder, 1 to 10; inside a scan only
    bool cargo = false;   // a freighter's livery
};

// An installed livery as the master index holds it.
struct LiveryEntry {
    std::string title;
    bool cargo = false;
};

using TitleViews = std::vector<std::string_view>;  // views into airlineLiveries
template <typename Value>
using PerAirlineAndModel = TextMap<TextMap<Value>>;

extern std::list<Livery> liveries;                                    // [worker] during reading only
extern PerAirlineAndModel<std::vector<LiveryEntry>> airlineLiveries;  // master index, owns the titles
extern std::array<PerAirlineAndModel<TitleViews>, 2> byAirlineModel;  // passenger, cargo
extern std::array<TextMap<TitleViews>, 2> byModel;                    // passenger, cargo
extern TextMap<std::string_view> regcodeTitles;                       // registration to title
extern TitleViews specialTitles;                               // to be used through their registration only
extern TextMap<std::vector<std::string>> similarWithLiveries;  // look-alikes with a livery
extern PerAirlineAndModel<std::vector<std::string>> similarPerAirline;        // those of one airline
extern std::vector<std::string> lightModels, buzjetModels, rotorcraftModels;  // with a livery, sorted
extern TitleViews refusedTitles;                                   // [worker, grows] refused by the simulator
extern std::unordered_map<uint32_t, std::string_view> titleCache;  // [worker, grows] hexid to title
extern std::set<std::string, std::less<>> failedLiveries;          // [worker, grows] keys that no livery fits
extern std::set<std::string, std::less<>>
    refusedAircraft;                            // [worker, grows] airline and model of refused ones
extern std::vector<std::string> dontUseTitles;  // [worker] titles that a scan leaves out
extern bool liveriesProcessed;                  // [worker] the indexes stand, once per program run
extern std::array<std::atomic<bool>, kCategoryCount>
    categoryInstalled;                        // [atomic] worker: liveries exist, its box is enabled
extern std::array<int32_t, 6> matchCounters;  // [worker, grows] live matches per step

}  // namespace vlt
