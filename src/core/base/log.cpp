#include "core/base/log.h"

#include "core/base/clock.h"
#include "core/base/locks.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/base/version.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vlt {

static std::ofstream logStream;  // [logMutex]
static int64_t lostLines = 0;    // [logMutex] since the last one that could be written

static void lf_moveOlder(const std::filesystem::path& from, const std::filesystem::path& to)
{
    std::error_code none;
    if (std::filesystem::exists(from, none)) {
        std::filesystem::rename(from, to, none);
    }
}

void logStart()
{
    const std::scoped_lock lock(logMutex);
    lf_moveOlder("Log0.txt", "Log00.txt");
    lf_moveOlder("Log.txt", "Log0.txt");
    // Without a buffer: what a full disk refuses mustn't come after all, behind the word that it is lost.
    logStream.rdbuf()->pubsetbuf(nullptr, 0);
    logStream.open("Log.txt", std::ios::trunc);
    if (!logStream) {
        throw std::runtime_error("Failed to write file " + gf_shown(std::filesystem::absolute("Log.txt")));
    }
    logStream << format("{} (utc) {} version {} for {}\n", nowString(), kProgramName,
                        gf_text(kProgramVersion), "Prepar3D v5/v6")
              << std::flush;
}

void gf_logEnd()
{
    const std::scoped_lock lock(logMutex);
    logStream.close();
}

void logLine(std::string_view text)
{
    const std::scoped_lock lock(logMutex);
    if (!logStream.is_open()) {
        return;
    }
    std::string line;
    if (lostLines > 0) {  // of the first of them half may be there
        line = format("\n({} line{} could not be written)\n", lostLines, gf_plural(lostLines));
    }
    line.append(text).append("\n");
    // A full disk may have room again: one line that fails mustn't silence all that follow.
    logStream.clear();
    logStream << line << std::flush;
    lostLines = logStream ? 0 : lostLines + 1;
}

void logLineTimed(std::string_view text)
{
    logLine(format("{} {}", timeOfDayString(), text));
}

void logLineUnlessStopping(std::string_view text)
{
    if (!gf_stopping()) {
        logLine(text);
    }
}

void logBanner(std::string_view title, int width)
{
    if (title.empty()) {
        logLine(std::string(static_cast<size_t>(width), '*'));
    } else {
        logLine(format("{:*^{}}", format(" {} ", title), width));
    }
}

}  // namespace vlt
