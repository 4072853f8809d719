#include "standin/day_fleet.h"

#include "core/base/text.h"
#include "standin/world_tables.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <set>
#include <tuple>

namespace vlt {

constexpr size_t kWanted = 80;  // airframes for each use of the airliners
constexpr size_t kWantedSmall = 24;
constexpr uint32_t kFirstHexid = 0x3C4000;
constexpr uint32_t kHexidSpread = 0x100000;

constexpr FleetUse kAirliner = FleetUse::Overflight;  // stands for all three uses of airliners
constexpr FleetUse kLight = FleetUse::Light;
constexpr FleetUse kRotor = FleetUse::Helicopter;
constexpr FleetUse kFast = FleetUse::Fast;

// A type of the day: its emitter category, and where it is used.
struct TypeRow {
    const char* type;
    const char* emitter;
    FleetUse use;
};

// clang-format off
constexpr std::array<TypeRow, 36> kTypes{{
    {"A319", "A3", kAirliner}, {"A320", "A3", kAirliner}, {"A20N", "A3", kAirliner},
    {"A321", "A3", kAirliner}, {"A21N", "A3", kAirliner}, {"A332", "A5", kAirliner},
    {"A333", "A5", kAirliner}, {"A359", "A5", kAirliner}, {"A388", "A5", kAirliner},
    {"B737", "A3", kAirliner}, {"B738", "A3", kAirliner}, {"B38M", "A3", kAirliner},
    {"B739", "A3", kAirliner}, {"B744", "A5", kAirliner}, {"B752", "A4", kAirliner},
    {"B763", "A5", kAirliner}, {"B772", "A5", kAirliner}, {"B77W", "A5", kAirliner},
    {"B788", "A5", kAirliner}, {"B789", "A5", kAirliner}, {"CRJ9", "A3", kAirliner},
    {"E190", "A3", kAirliner}, {"E195", "A3", kAirliner}, {"BCS3", "A3", kAirliner},
    {"C172", "A1", kLight}, {"C152", "A1", kLight}, {"P28A", "A1", kLight},
    {"SR22", "A1", kLight}, {"DA40", "A1", kLight}, {"DR40", "A1", kLight},
    {"EC35", "A7", kRotor}, {"R44",  "A7", kRotor}, {"EC45", "A7", kRotor},
    {"F16",  "A6", kFast}, {"EUFI", "A6", kFast}, {"F18", "A6", kFast},
}};
constexpr std::array<const char*, 16> kAirlines{"DLH", "BAW", "AFR", "KLM", "SWR", "AUA", "EZY", "RYR",
                                                "WZZ", "SAS", "IBE", "TAP", "THY", "UAE", "FDX", "EWG"};
// clang-format on

uint64_t gf_mixed(uint64_t a, uint64_t b)
{
    // SplitMix64, a public-domain mixing function.
    uint64_t z = a * 0x9E3779B97F4A7C15 + b + 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

static const TypeRow* lf_typeRow(const std::string& type)
{
    for (const TypeRow& row : kTypes) {
        if (type == row.type) {
            return &row;
        }
    }
    return nullptr;
}

// Airliners go round the three uses, so that each has its own.
static FleetUse lf_use(const TypeRow& row, size_t n)
{
    return row.use == kAirliner ? static_cast<FleetUse>(n % 3) : row.use;
}

static size_t lf_wanted(size_t use)
{
    return use <= static_cast<size_t>(FleetUse::Departure) ? kWanted : kWantedSmall;
}

struct FleetBuilder {
    Fleet fleet;
    std::set<std::string> regs;
    std::set<uint32_t> hexids;
    uint64_t seed = 0;
};

static void lf_add(FleetBuilder& builder, Airframe airframe, FleetUse use)
{
    auto& list = builder.fleet.airframes[static_cast<size_t>(use)];
    const bool misplaced = airframe.cargo && use == FleetUse::Arrival;  // the gates are for passengers
    if (misplaced || list.size() >= lf_wanted(static_cast<size_t>(use)) ||
        !builder.regs.insert(airframe.reg).second) {
        return;
    }
    uint64_t draw = Fnv1a()(airframe.reg);
    do {
        draw = gf_mixed(draw, 1);
        airframe.hexid = kFirstHexid + static_cast<uint32_t>(draw % kHexidSpread);
    } while (!builder.hexids.insert(airframe.hexid).second);
    list.push_back(std::move(airframe));
}

// The pairs of airline and type that have a livery of their own, as "DLH A320".
static std::set<std::string> lf_paintedPairs(const std::filesystem::path& file)
{
    std::set<std::string> pairs;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        const std::vector<std::string> cells = gf_csvCells(line);
        if (cells.size() >= 2) {
            pairs.insert(cells[0] + " " + cells[1]);
        }
    }
    return pairs;
}

static void lf_addFromTable(FleetBuilder& builder, const std::filesystem::path& world)
{
    constexpr size_t kCargoColumn = 4;
    const std::set<std::string> painted = lf_paintedPairs(world / "liveries.csv");
    std::ifstream in(world / "registrations.csv");
    std::string line;
    std::vector<Airframe> rows;
    while (std::getline(in, line)) {
        const std::vector<std::string> cells = gf_csvCells(line);
        if (cells.size() < 3 || cells[0].empty() || cells[0].size() > 12) {
            continue;
        }
        if (const TypeRow* row = lf_typeRow(cells[2])) {
            const bool airliner = row->use == kAirliner;
            const bool ofAirline = cells[1].size() == 3 && cells[1] != "PVT";
            if (airliner == ofAirline) {
                const bool cargo = cells.size() > kCargoColumn && cells[kCargoColumn] == "1";
                rows.push_back({0, cells[0], ofAirline ? cells[1] : "", cells[2], row->emitter, cargo});
            }
        }
    }
    const auto rank = [&](const Airframe& airframe) {
        const bool plain = !painted.contains(airframe.airline + " " + airframe.type);
        return std::tuple(plain, gf_mixed(Fnv1a()(airframe.reg), builder.seed), airframe.reg);
    };
    std::sort(rows.begin(), rows.end(),
              [&](const Airframe& a, const Airframe& b) { return rank(a) < rank(b); });
    for (size_t n = 0; n < rows.size(); ++n) {
        lf_add(builder, rows[n], lf_use(*lf_typeRow(rows[n].type), n));
    }
}

// Letters out of a number, at least `count`.
static std::string lf_letters(uint64_t number, int count)
{
    std::string letters;
    for (int i = 0; i < count; ++i) {
        letters += static_cast<char>('A' + number % 26);
        number /= 26;
    }
    return letters;
}

static void lf_addMadeUp(FleetBuilder& builder, size_t n)
{
    const uint64_t draw = gf_mixed(builder.seed, n + 1000);
    const TypeRow& row = kTypes[draw % kTypes.size()];
    Airframe airframe{0, "", "", row.type, row.emitter, false};
    if (row.use == kAirliner) {
        airframe.airline = kAirlines[(draw >> 16) % kAirlines.size()];
        airframe.reg = "D-A" + lf_letters(draw >> 24, 3);
    } else {
        const char* front = row.use == FleetUse::Light        ? "D-E"
                            : row.use == FleetUse::Helicopter ? "D-H"
                                                              : "D-F";
        airframe.reg = front + lf_letters(draw >> 24, 3);
    }
    lf_add(builder, std::move(airframe), lf_use(row, n));
}

static bool lf_full(const Fleet& fleet)
{
    for (size_t use = 0; use < kFleetUses; ++use) {
        if (fleet.airframes[use].size() < lf_wanted(use)) {
            return false;
        }
    }
    return true;
}

Fleet gf_fleet(const std::filesystem::path& world, uint64_t seed)
{
    FleetBuilder builder;
    builder.seed = seed;
    lf_addFromTable(builder, world);
    for (size_t n = 0; !lf_full(builder.fleet); ++n) {
        lf_addMadeUp(builder, n);
    }
    return std::move(builder.fleet);
}

}  // namespace vlt
