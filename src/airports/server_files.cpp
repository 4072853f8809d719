#include "airports/server_files.h"

#include "core/base/download.h"
#include "traffic/traffic.h"

#include <chrono>
#include <future>
#include <map>
#include <optional>

namespace vlt {

struct Asked {
    int32_t tick = 0;                                // when
    std::future<std::optional<std::string>> coming;  // valid while the answer is awaited
    std::shared_ptr<const std::string> text;
};
static std::map<std::string, Asked> asked;  // [worker] by path

static constexpr int32_t kAgainAfter = 300 * kTicksPerSecond;

// The answer, if it has come. True then.
static bool lf_take(Asked& file)
{
    if (!file.coming.valid() || file.coming.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        return false;
    }
    if (std::optional<std::string> text = file.coming.get()) {
        file.text = std::make_shared<const std::string>(std::move(*text));
    }
    return true;
}

ServerFile gf_serverFile(const std::string& path)
{
    constexpr std::chrono::seconds kPatience(20);
    std::erase_if(asked, [](const auto& entry) {
        return !entry.second.coming.valid() && tick - entry.second.tick >= kAgainAfter;
    });
    const auto [place, isNew] = asked.try_emplace(path);
    Asked& file = place->second;
    if (isNew) {
        file.tick = tick;
        file.coming = std::async(std::launch::async, gf_fetchText, path, kPatience);
    }
    lf_take(file);
    return {file.coming.valid(), file.text};
}

bool gf_serverAnswered()
{
    bool answered = false;
    for (auto& [path, file] : asked) {
        answered |= lf_take(file);
    }
    return answered;
}

void gf_forgetServerFiles()
{
    asked.clear();
}

}  // namespace vlt
