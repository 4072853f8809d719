#include "core/base/parameters.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/version.h"
#include "core/base/xml_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <vector>

namespace vlt {

static constexpr int32_t kWholeMetresPerNm = 1852;

// The parameters that stand in the file: hidden ones first, then those with a control.
static const auto kStoredBools = std::to_array<BoolParameter*>({
    &RANDOM,
    &ALWAYS_ON_TOP,
    &GUID_CHANGES,
    &AEROWINX,
    &LEARN_SOFT,
    &NAV_LIGHTS_WHILE_PARKED,
    &LOG,
    &SCAN_LIVERIES,
    &LIG_AUTOMATIC,
    &LIG_PRIORITIZE,
    &SUPPRESS_STUB,
    &SCAN_AIRPORTS,
    &AFG_AUTOMATIC,
    &LIGHT_AIRCRAFT,
    &HELICOPTERS,
    &HIGH_PERF_AIRCRAFT,
    &AUTO_RANGE,
    &COLLISION_USER_AIR,
    &COLLISION_USER_GND,
    &COLLISION_LIVE_PARKED_GND,
    &INITIAL_LOAD_ONLY,
    &PARK_SOFT,
    &PARK_FAKE,
    &WEEK,
    &STRAIGHT_PBS_ONLY,
});

static const auto kStoredInts = std::to_array<IntParameter*>({
    &CUSTOM_PARKING_PERCENTAGE,
    &MAIN_WINDOW_X,
    &MAIN_WINDOW_Y,
    &LAST_EPOCH_TIME,
    &HOLDING_THRESHOLD_METERS,
    &MAX_HOLDING_MINUTES,
    &P3D_VERSION,
    &MATCHING_DEPTH,
    &LATERAL_RANGE,
    &AUTO_RANGE_ABOVE_HEIGHT,
    &MAX_LIVE,
    &AIRPORT_RANGE,
    &AIRPORT_HEIGHT,
    &MAX_FIT,
    &CUSTOM_MAX_PARK,
});

static std::vector<StringParameter*> lf_storedStrings()
{
    std::vector<StringParameter*> list{&PROGRAM_VERSION, &PROGRAM_INSTALL_PATH, &SIM_INSTALL_PATH,
                                       &PORT_NUMBER};
    for (auto& folder : lfolders) {
        list.push_back(&folder);
    }
    for (auto& folder : afolders) {
        list.push_back(&folder);
    }
    list.push_back(&BLOCK_CALLSIGN);
    list.push_back(&DESTINATION);
    return list;
}

static const std::vector<StringParameter*> kStoredStrings = lf_storedStrings();

static std::string lf_fileText(const BoolParameter& p)
{
    return p.value ? "true" : "false";
}

static std::string lf_fileText(const IntParameter& p)
{
    return std::to_string(p.value);
}

static std::string lf_fileText(const StringParameter& p)
{
    return p.value;
}

static void lf_take(BoolParameter& p, const pugi::xml_attribute& value)
{
    p.value = value.as_bool();
}

static void lf_take(IntParameter& p, const pugi::xml_attribute& value)
{
    p.value = std::clamp(value.as_int(), p.min, p.max);
}

static void lf_take(StringParameter& p, const pugi::xml_attribute& value)
{
    p.value = value.as_string();
}

static pugi::xml_node lf_find(const pugi::xml_document& document, const std::string& name)
{
    return document.select_node(format("parameters/parameter[@name='{}']", name).c_str()).node();
}

// Adds the parameter's element; the file may have lost its `parameters` element too.
template <typename P>
static void lf_add(pugi::xml_document& document, const P& p)
{
    pugi::xml_node list = document.child("parameters");
    if (!list) {
        list = document.append_child("parameters");
    }
    pugi::xml_node element = list.append_child("parameter");
    if (!element.append_attribute("name").set_value(p.name.c_str()) ||
        !element.append_attribute("value").set_value(lf_fileText(p).c_str())) {
        logLine(format("{}adding init xml parameter {} with {} failed!", "===> ", p.name, lf_fileText(p)));
    }
}

template <typename P>
static void lf_logValue(const P& p)
{
    logLine(format("{}={}", p.name, lf_fileText(p)));
}

template <typename P>
static void lf_write(pugi::xml_document& document, const P& p)
{
    lf_add(document, p);
    lf_logValue(p);
}

template <typename P>
static void lf_read(pugi::xml_document& document, P& p)
{
    if (const pugi::xml_node element = lf_find(document, p.name)) {
        lf_take(p, element.attribute("value"));
    } else {
        p.value = p.def;
        lf_add(document, p);
    }
    lf_logValue(p);
}

// Folder parameters leave no empty lines in the file.
static void lf_readFolder(pugi::xml_document& document, StringParameter& p)
{
    pugi::xml_node element = lf_find(document, p.name);
    p.value = element.attribute("value").as_string();
    if (element && p.value.empty()) {
        element.parent().remove_child(element);
        logLine(format("Parameter {} removed", p.name));
        return;
    }
    lf_logValue(p);
}

// A file that was there but can't be read is somebody's work: it is kept beside the new one.
static void lf_keepUnreadable(const std::filesystem::path& file)
{
    std::error_code error;
    if (std::filesystem::is_regular_file(file, error) && std::filesystem::file_size(file, error) > 0) {
        std::filesystem::path aside = file;
        aside.replace_extension(".unreadable.xml");
        std::filesystem::rename(file, aside, error);
        if (!error) {
            logLine(format("the unreadable file is kept as \"{}\"", gf_shown(aside)));
        }
    }
}

static void lf_makeNew(const std::filesystem::path& file)
{
    logLine(gf_shown(file) + " not found, default values taken:");
    lf_keepUnreadable(file);
    pugi::xml_document document;
    gf_addMeta(document);
    document.append_child("parameters");
    for (const BoolParameter* p : kStoredBools) {
        lf_write(document, *p);
    }
    for (const IntParameter* p : kStoredInts) {
        lf_write(document, *p);
    }
    for (const StringParameter* p : kStoredStrings) {
        lf_write(document, *p);
    }
    saveXml(document, file);
    PROGRAM_VERSION.value = gf_text(kProgramVersion);
    saveParameter(PROGRAM_VERSION);
}

static void lf_readExisting(pugi::xml_document& document, const std::filesystem::path& file)
{
    logLine(format("from \"{}\"", gf_shown(file)));
    for (BoolParameter* p : kStoredBools) {
        lf_read(document, *p);
    }
    for (IntParameter* p : kStoredInts) {
        lf_read(document, *p);
    }
    for (StringParameter* p : kStoredStrings) {
        if (isFolderParameter(p->name)) {
            lf_readFolder(document, *p);
        } else {
            lf_read(document, *p);
        }
    }
    saveXml(document, file);
}

// A new version scans everything once, because it may read differently.
static void lf_migrate()
{
    const std::string own = gf_text(kProgramVersion);
    if (PROGRAM_VERSION.value == PROGRAM_VERSION.def) {
        PROGRAM_VERSION.value = own;
        saveParameter(PROGRAM_VERSION);
        return;
    }
    const std::string storedText = PROGRAM_VERSION.value;
    const auto [stored, failed] = gf_parseVersion(storedText);
    if (!failed.empty()) {
        showMessage(format("VersionData exception: {}", failed), true);
    }
    if (stored != kProgramVersion) {
        PROGRAM_VERSION.value = own;
        saveParameter(PROGRAM_VERSION);
    }
    if (kProgramVersion <= stored) {
        return;
    }
    logLine(format("This is a version update from {} -> {}", gf_text(stored), own));
    if (std::filesystem::exists(kInstallerFile)) {
        std::filesystem::remove(kInstallerFile);
    }
    SCAN_LIVERIES.value = true;
    SCAN_AIRPORTS.value = true;
    saveParameter(SCAN_LIVERIES);
    saveParameter(SCAN_AIRPORTS);
}

void gf_applyLateralRange()
{
    LATERAL_RANGE.value = std::clamp(LATERAL_RANGE.value.load(), LATERAL_RANGE.min, LATERAL_RANGE.max);
    lateralRangeNm = LATERAL_RANGE.value.load();
    lateralRangeMetres = LATERAL_RANGE.value * kWholeMetresPerNm;
}

void gf_switchAutoRange(bool on)
{
    if (on == AUTO_RANGE.value) {
        return;
    }
    AUTO_RANGE.value = on;
    if (on) {
        rangeBeforeAuto = LATERAL_RANGE.value.load();
    } else {
        LATERAL_RANGE.value = rangeBeforeAuto.load();
        gf_applyLateralRange();
    }
}

void gf_applyMaxFit()
{
    MAX_FIT_FL.value = static_cast<float>(MAX_FIT.value) * 0.5F + 0.5F;
}

void readParameters()
{
    logBanner("parameters");
    const std::filesystem::path file = gf_parametersFile();
    pugi::xml_document document;
    if (document.load_file(file.c_str())) {
        lf_readExisting(document, file);
        lf_migrate();
    } else {
        lf_makeNew(file);
    }
    gf_applyLateralRange();
    gf_applyMaxFit();
}

void gf_readWindowPlace()
{
    pugi::xml_document document;
    if (!document.load_file(gf_parametersFile().c_str())) {
        return;
    }
    for (IntParameter* p : {&MAIN_WINDOW_X, &MAIN_WINDOW_Y}) {
        if (const pugi::xml_node element = lf_find(document, p->name)) {
            lf_take(*p, element.attribute("value"));
        }
        if (p->value == p->min || p->value == p->max) {
            p->value = std::clamp(p->def, p->min, p->max);
            saveParameter(*p);
        }
    }
}

template <typename P>
static void lf_save(const P& p)
{
    const std::filesystem::path file = gf_parametersFile();
    pugi::xml_document document;
    bool saved = false;
    if (document.load_file(file.c_str())) {
        if (const pugi::xml_node element = lf_find(document, p.name)) {
            pugi::xml_attribute value = element.attribute("value");
            if (!value) {
                value = pugi::xml_node(element).append_attribute("value");
            }
            value.set_value(lf_fileText(p).c_str());
        } else {
            lf_add(document, p);
        }
        lf_logValue(p);
        saved = saveXml(document, file);
    }
    if (!saved) {
        logLine("saving xml did not work?");
    }
}

void saveParameter(const BoolParameter& p)
{
    lf_save(p);
}

void saveParameter(const IntParameter& p)
{
    lf_save(p);
}

void saveParameter(const StringParameter& p)
{
    lf_save(p);
}

bool isFolderParameter(std::string_view name)
{
    return name.starts_with("lfolder") || name.starts_with("afolder");
}

std::span<BoolParameter* const> gf_storedBools()
{
    return kStoredBools;
}

std::span<IntParameter* const> gf_storedInts()
{
    return kStoredInts;
}

std::span<StringParameter* const> gf_storedStrings()
{
    return kStoredStrings;
}

}  // namespace vlt
