#include "core/base/scan_progress.h"

#include "core/base/display.h"
#include "core/base/text.h"

#include <chrono>

namespace vlt {

static int64_t lf_nowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

ScanProgress::ScanProgress(std::string_view what) : m_what(what), m_toldMs(lf_nowMs())
{
    display.scan = ShownScan{};
}

ScanProgress::~ScanProgress()
{
    display.scan = ShownScan{};
}

void ScanProgress::enter(std::string_view folder)
{
    m_folder = folder;
    display.scan.folder = m_folder;
    tell();
}

void ScanProgress::seen()
{
    display.scan.files = static_cast<int32_t>(++m_files);
    tell();
}

void ScanProgress::found(int64_t count)
{
    m_found += count;
    display.scan.found = static_cast<int32_t>(m_found);
    tell();
}

void ScanProgress::tell()
{
    constexpr int64_t kEveryMs = 1000;
    const int64_t now = lf_nowMs();
    if (now - m_toldMs < kEveryMs) {
        return;
    }
    m_toldMs = now;
    showMessage(format("Scanning {}: {} file{} seen, {} {} found", m_folder, m_files, gf_plural(m_files),
                       m_found, m_what),
                false);
}

}  // namespace vlt
