#include "sim/wire/transport/config.h"

#include "platform/folders.h"
#include "platform/ini_text.h"
#include "platform/paths_form.h"
#include "platform/registry.h"

#include <algorithm>
#include <charconv>

namespace vlt {

constexpr std::string_view kSimKey = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";
constexpr size_t kMaxPortText = 20;  // bytes

std::vector<std::filesystem::path> gf_simConfigFolders()
{
    return {gf_publicDocumentsFolder(), gf_documentsFolder(), gf_currentFolder()};
}

std::string gf_simPortFromRegistry(SimProtocol protocol)
{
    const auto name = protocol == SimProtocol::IPv6 ? "SimConnect_Port_IPv6" : "SimConnect_Port_IPv4";
    const auto port = gf_registryText(kCurrentUserKey, kSimKey, name);
    return port && port->size() <= kMaxPortText ? *port : std::string();
}

static std::string lf_sectionName(uint32_t configIndex)
{
    return configIndex == 0 ? "SimConnect" : "SimConnect." + std::to_string(configIndex);
}

// The whole number at the front of `text`; 0 if there is none, or it doesn't fit.
static int64_t lf_wholeNumber(std::string_view text)
{
    int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

static void lf_applyProtocol(SimConfig& config, std::string_view word)
{
    if (gf_sameIgnoringCase(word, "Auto") || gf_sameIgnoringCase(word, "Pipe")) {
        config.protocol = SimProtocol::Auto;
        return;
    }
    const bool v6 = gf_sameIgnoringCase(word, "IPv6");
    if (!v6 && !gf_sameIgnoringCase(word, "IPv4")) {
        return;
    }
    config.protocol = v6 ? SimProtocol::IPv6 : SimProtocol::IPv4;
    // A port from an earlier file belonged to another way; the simulator's own replaces it.
    if (!config.port.empty()) {
        config.port = gf_simPortFromRegistry(config.protocol);
    }
}

static void lf_applyFile(SimConfig& config, std::string_view ini, const std::string& section)
{
    if (const auto word = gf_iniValue(ini, section, "Protocol")) {
        lf_applyProtocol(config, *word);
    }
    if (const auto address = gf_iniValue(ini, section, "Address")) {
        config.address = *address;
    }
    if (const auto port = gf_iniValue(ini, section, "Port")) {
        config.port = *port;
    }
    if (const auto size = gf_iniValue(ini, section, "MaxReceiveSize")) {
        const int64_t bytes = std::min<int64_t>(lf_wholeNumber(*size), UINT32_MAX);
        config.maxReceiveSize = static_cast<uint32_t>(std::max<int64_t>(bytes, config.maxReceiveSize));
    }
    if (const auto on = gf_iniValue(ini, section, "DisableNagle")) {
        config.disableNagle = lf_wholeNumber(*on) != 0;
    }
}

std::optional<SimConfig> gf_readSimConfig(std::span<const std::filesystem::path> folders,
                                          uint32_t configIndex)
{
    std::vector<std::string> files;
    for (const auto& folder : folders) {
        files.push_back(gf_readIniFile(gf_toNativeForm((folder / "SimConnect.cfg").string())));
    }
    const std::string section = lf_sectionName(configIndex);
    const auto hasSection = [&](const std::string& file) { return gf_iniHasSection(file, section); };
    if (configIndex != 0 && std::none_of(files.begin(), files.end(), hasSection)) {
        return std::nullopt;
    }
    SimConfig config;
    for (const std::string& file : files) {
        lf_applyFile(config, file, section);
    }
    return config;
}

}  // namespace vlt
