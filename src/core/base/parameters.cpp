#include "core/base/parameters.h"

#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "core/base/version.h"
#include "core/base/xml_file.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

namespace vlt {

// Gives each parameter that stands in the file to `act`, in the order of a new file.
template <typename Act>
static void lf_forEachInFile(const Act& act)
{
    const auto walk = [&act](const auto& list) {
        for (auto* p : list) {
            if (p->kept == Kept::InFile) {
                act(*p);
            }
        }
    };
    walk(gf_parameters<bool>());
    walk(gf_parameters<int32_t>());
    walk(gf_parameters<std::string>());
}

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
        logLine(format("===> adding init xml parameter {} with {} failed!", p.name, lf_fileText(p)));
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
template <typename P>
static void lf_readFolder(pugi::xml_document& document, P& p)
{
    pugi::xml_node element = lf_find(document, p.name);
    lf_take(p, element.attribute("value"));
    if (element && lf_fileText(p).empty()) {
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
        if (const std::filesystem::path aside = gf_putAside(file); !aside.empty()) {
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
    lf_forEachInFile([&document](const auto& p) { lf_write(document, p); });
    saveXml(document, file);
}

static void lf_readExisting(pugi::xml_document& document, const std::filesystem::path& file)
{
    logLine(format("from \"{}\"", gf_shown(file)));
    lf_forEachInFile([&document](auto& p) {
        if (isFolderParameter(p.name)) {
            lf_readFolder(document, p);
        } else {
            lf_read(document, p);
        }
    });
    saveXml(document, file);
}

// A new version scans everything once, because it may read differently.
static std::string lf_migrate()
{
    const std::string own = gf_text(kProgramVersion);
    const std::string storedText = PROGRAM_VERSION.value;
    if (storedText.empty()) {
        PROGRAM_VERSION.value = own;
        saveParameter(PROGRAM_VERSION);
        return {};
    }
    const auto [stored, failed] = gf_parseVersion(storedText);
    std::string forUser = failed.empty() ? "" : format("VersionData exception: {}", failed);
    if (stored != kProgramVersion) {
        PROGRAM_VERSION.value = own;
        saveParameter(PROGRAM_VERSION);
    }
    if (kProgramVersion <= stored) {
        return forUser;
    }
    logLine(format("This is a version update from {} -> {}", gf_text(stored), own));
    if (std::filesystem::exists(kInstallerFile)) {
        std::filesystem::remove(kInstallerFile);
    }
    SCAN_LIVERIES.value = true;
    SCAN_AIRPORTS.value = true;
    saveParameter(SCAN_LIVERIES);
    saveParameter(SCAN_AIRPORTS);
    return forUser;
}

// The worker computes the range, and whoever gives commands switches that on and off.
static std::mutex rangeMutex;

static void lf_applyLateralRange()
{
    LATERAL_RANGE.value = std::clamp(LATERAL_RANGE.value.load(), LATERAL_RANGE.min, LATERAL_RANGE.max);
    lateralRangeNm = LATERAL_RANGE.value.load();
    lateralRangeMetres = LATERAL_RANGE.value * static_cast<int32_t>(kMetresPerNm);
}

void gf_applyLateralRange()
{
    const std::scoped_lock lock(rangeMutex);
    lf_applyLateralRange();
}

void gf_takeAutomaticRange(int32_t rangeNm)
{
    const std::scoped_lock lock(rangeMutex);
    if (AUTO_RANGE.value) {
        LATERAL_RANGE.value = rangeNm;
        lf_applyLateralRange();
    }
}

void gf_switchAutoRange(bool on)
{
    const std::scoped_lock lock(rangeMutex);
    if (on == AUTO_RANGE.value) {
        return;
    }
    AUTO_RANGE.value = on;
    if (on) {
        rangeBeforeAuto = LATERAL_RANGE.value.load();
    } else {
        LATERAL_RANGE.value = rangeBeforeAuto.load();
        lf_applyLateralRange();
    }
}

void gf_applyMaxFit()
{
    MAX_FIT_FL.value = static_cast<float>(MAX_FIT.value) * 0.5F + 0.5F;
}

std::string readParameters()
{
    logBanner("parameters");
    {
        const std::scoped_lock lock(parameterMutex);
        const std::filesystem::path file = gf_parametersFile();
        pugi::xml_document document;
        if (document.load_file(file.c_str())) {
            lf_readExisting(document, file);
        } else {
            lf_makeNew(file);
        }
    }
    std::string forUser = lf_migrate();
    gf_applyLateralRange();
    gf_applyMaxFit();
    return forUser;
}

static bool lf_load(pugi::xml_document& document)
{
    const std::scoped_lock lock(parameterMutex);
    return static_cast<bool>(document.load_file(gf_parametersFile().c_str()));
}

void gf_readWindowPlace()
{
    pugi::xml_document document;
    if (!lf_load(document)) {
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
    const std::scoped_lock lock(parameterMutex);
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

}  // namespace vlt
