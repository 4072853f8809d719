#include "airports/loading.h"

#include "airports/airport_file.h"
#include "airports/learned_file.h"
#include "core/base/download.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "platform/paths_form.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <filesystem>
#include <stdexcept>

namespace vlt {

static constexpr int32_t kGoodRealQuality = 45;
static constexpr size_t kGoodStandCount = 20;
static constexpr int32_t kHighestAirport = 30000;  // feet, above every airport and below none

// --- quality

// The score of a stand's options of one kind; 0 without any.
static int64_t lf_score(const ParkPos& stand, bool real)
{
    constexpr size_t kDays = 7;
    int64_t count = 0;
    int64_t slots = 0;
    std::bitset<kDays + 1> days;
    for (const StandOption& option : stand.options) {
        if (option.sequence == 0 || option.real != real) {
            continue;
        }
        ++count;
        slots += static_cast<int64_t>(option.hours.count());
        if (option.day >= 1 && option.day <= static_cast<int32_t>(kDays)) {
            days.set(static_cast<size_t>(option.day));
        }
    }
    if (count == 0) {
        return 0;
    }
    return 10000 + std::min<int64_t>(20 * count, 4000) + 100 * static_cast<int64_t>(days.count()) +
           2 * std::min<int64_t>(slots, 600);
}

static int32_t lf_factor(const std::vector<ParkPos>& stands, bool real)
{
    constexpr double kPointsPerScore = 0.00625;
    int64_t sum = 0;
    for (const ParkPos& stand : stands) {
        sum += lf_score(stand, real);
    }
    const double mean = static_cast<double>(sum) / static_cast<double>(stands.size());
    return static_cast<int32_t>(std::clamp(std::lround(mean * kPointsPerScore), 0L, 100L));
}

Quality gf_qualityFactor(const std::vector<ParkPos>& stands)
{
    const bool known = std::ranges::any_of(stands, [](const ParkPos& s) { return !s.options.empty(); });
    return known ? Quality{lf_factor(stands, true), lf_factor(stands, false)} : Quality{};
}

bool gf_hasGoodQuality(const Apf& apf)
{
    return apf.quality.real >= kGoodRealQuality && apf.stands.size() >= kGoodStandCount;
}

std::string gf_qualityText(Quality quality)
{
    if (quality.real < 0 && quality.soft < 0) {
        return "  ";
    }
    return quality.real < kGoodRealQuality ? format("{:2}/{:2}", quality.real, quality.soft)
                                           : format("{:2}", quality.real);
}

// --- neighbours

void gf_findNeighbours(std::vector<ParkPos>& stands)
{
    // Neighbours' circles overlap by a tenth of their distance: those that only touch leave each other room.
    constexpr double kMargin = 1.1;
    constexpr double kNmPerDeg = 59.9;  // of latitude, not more than it is: a quick look before the distance
    for (ParkPos& stand : stands) {
        stand.neighbours.clear();
    }
    for (size_t i = 0; i < stands.size(); ++i) {
        for (size_t k = i + 1; k < stands.size(); ++k) {
            ParkPos& a = stands[i];
            ParkPos& b = stands[k];
            const double reach = a.radius + b.radius;
            if (std::abs(a.lat - b.lat) * kNmPerDeg * kMargin < reach &&
                reach > distNm(gf_placeOf(a), gf_placeOf(b)) * kMargin) {
                a.neighbours.push_back(b.index);
                b.neighbours.push_back(a.index);
            }
        }
    }
    for (ParkPos& stand : stands) {
        stand.neighbours.shrink_to_fit();
    }
}

// --- the load, stage by stage

static void lf_readParameters(const pugi::xml_document& document, Apf& apf)
{
    apf.trafficWeek = gf_intParameter(document, "RT_traffic_week").value_or(0);
    apf.publisher = gf_textParameter(document, "publisher").value_or("");
    const auto altitude = gf_intParameter(document, "altitude");
    if (!altitude) {
        throw UserErrorException(kPlainUserError, "Parameter altitude not found");
    }
    if (*altitude < -kHighestAirport || *altitude > kHighestAirport) {
        throw std::runtime_error(format("an altitude of {} ft can't be", *altitude));
    }
    apf.altitude = *altitude;
    apf.name = gf_textParameter(document, "airport_name").value_or("");
    apf.bglPath = gf_textParameter(document, "BGLpath").value_or("");
}

static void lf_readStands(const pugi::xml_document& document, Apf& apf)
{
    gf_readParkPositions(document, apf.stands);
    const auto points = [&document](const char* name) {
        return std::clamp(gf_intParameter(document, name).value_or(-1), -1, 100);
    };
    apf.quality = {points("Qf_real"), points("Qf_soft")};
}

// The learned file that there is: beside where the airport's own comes from, else where it is saved; empty
// for none.
static std::string lf_learnedFile(const AirportLoad& load)
{
    for (const std::string& path :
         {learnedPath(load.source, load.apf.publisher), gf_savedPath(load.apf.code, load.apf.publisher)}) {
        std::error_code error;
        if (!path.empty() && std::filesystem::is_regular_file(gf_toNativeForm(path), error)) {
            return path;
        }
    }
    return {};
}

static void lf_warnOfComma(AirportLoad& load, const std::string& path, const std::string& comma)
{
    if (!comma.empty()) {
        load.warnings.push_back(format("{} has decimal commas, the first is {}", path, comma));
    }
}

static void lf_layLearnedOver(AirportLoad& load)
{
    const std::string learned = lf_learnedFile(load);
    load.learned = !learned.empty();
    if (!load.learned) {
        return;
    }
    lf_warnOfComma(load, learned, lf_readLearned(gf_toNativeForm(learned), learned, load.apf, load.settings));
    load.apf.quality = gf_qualityFactor(load.apf.stands);
    if (load.apf.handmade) {
        load.source = learned;
        logLine("A handmade airport file overruled the archived file!");
    }
}

static void lf_logLoad(const AirportLoad& load)
{
    const Apf& apf = load.apf;
    logLine(format("Airport file read from \"{}\" for {}", load.source, apf.name));
    logLine(format("{:24}: {}", "publisher", apf.publisher));
    logLine(format("{:24}: {} ft", "altitude", apf.altitude));
    logLine(format("{:24}: {}", "num_parkpos", apf.stands.size()));
    logLine(format("{:24}: {}", "quality factor", gf_qualityText(apf.quality)));
    logLine(format("{:24}: {}", "RT traffic week", apf.trafficWeek));
}

enum class Learned { LaidOver, LeftOut };

// What is wrong with the file, an empty text for nothing. Throws for what it holds.
static std::string lf_read(const pugi::xml_document& document, const pugi::xml_parse_result& parsed,
                           Learned learned, AirportLoad& load)
{
    if (!parsed) {
        return format("{} could not be loaded: {}", load.source, parsed.description());
    }
    lf_readParameters(document, load.apf);
    lf_readStands(document, load.apf);
    lf_warnOfComma(load, load.source, gf_decimalComma(document));
    if (learned == Learned::LaidOver) {
        lf_layLearnedOver(load);
    }
    gf_numberStands(load.apf.stands);
    lf_logLoad(load);
    return load.apf.stands.empty() ? "no stands found" : "";
}

// Every failure becomes a text, and leaves no stands.
static void lf_tryToRead(const pugi::xml_document& document, const pugi::xml_parse_result& parsed,
                         Learned learned, AirportLoad& load)
{
    try {
        load.failed = lf_read(document, parsed, learned, load);
    } catch (const UserErrorException& e) {
        load.failed = e.what();
    } catch (const std::exception& e) {
        load.failed = format("gf_readApf: {}", e.what());
    }
    if (!load.failed.empty()) {
        load.apf.stands.clear();
    }
}

static AirportLoad lf_newLoad(const std::string& source, const std::string& code)
{
    AirportLoad load;
    load.source = source;
    load.apf.code = code;
    return load;
}

static void lf_readLocal(const std::filesystem::path& file, Learned learned, AirportLoad& load)
{
    pugi::xml_document document;
    lf_tryToRead(document, document.load_file(file.c_str()), learned, load);
}

// What was fetched is kept for people to look at.
static void lf_readServed(const std::string& text, AirportLoad& load)
{
    gf_replaceFile(kAirportsFolder / "park_airport.xml", text);
    pugi::xml_document document;
    lf_tryToRead(document, document.load_buffer(text.data(), text.size()), Learned::LaidOver, load);
}

AirportLoad gf_readApf(const AirportSource& source, const std::string& code)
{
    AirportLoad load = lf_newLoad(source.path, code);
    if (source.path.empty()) {
        load.failed = "gf_readApf xml is empty...";
    } else if (code.empty()) {
        load.failed = "gf_readApf no park airport set";
    } else if (gf_isLocalPath(source.path)) {
        lf_readLocal(gf_toNativeForm(source.path), Learned::LaidOver, load);
    } else if (source.served.text) {
        lf_readServed(*source.served.text, load);
    } else {
        load.failed = format("failed to download: \"{}\"", gf_serverAddress() + source.path);
        logLine(load.failed);
    }
    return load;
}

AirportLoad gf_readApfAlone(const std::filesystem::path& file, const std::string& code)
{
    AirportLoad load = lf_newLoad(file.string(), code);
    lf_readLocal(file, Learned::LeftOut, load);
    return load;
}

void gf_numberStands(std::vector<ParkPos>& stands)
{
    stands.shrink_to_fit();
    uint32_t index = kNoStand;
    for (ParkPos& stand : stands) {
        stand.index = ++index;
        stand.options.shrink_to_fit();
    }
    gf_findNeighbours(stands);
}

}  // namespace vlt
