#include "standin/long_run.h"

#include "core/base/clock.h"
#include "core/base/text.h"
#include "standin/run_files.h"

#include <charconv>
#include <iterator>
#include <string_view>
#include <system_error>

namespace vlt {

constexpr int32_t kMinutesPerHour = 60;
constexpr double kMostGrowthMb = 5;

// The number behind a word at the beginning of a line of the process's status; 0 if there is none.
static int64_t lf_statusNumber(std::string_view word)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(word)) {
            const size_t at = line.find_first_of("0123456789");
            int64_t number = 0;
            if (at != std::string::npos) {
                std::from_chars(line.data() + at, line.data() + line.size(), number);
            }
            return number;
        }
    }
    return 0;
}

ProcessUse gf_processUse()
{
    constexpr double kKbPerMb = 1024;
    std::error_code none;  // the end of the list: nothing to count
    const std::filesystem::directory_iterator open("/proc/self/fd", none);
    return {static_cast<double>(lf_statusNumber("VmRSS:")) / kKbPerMb, lf_statusNumber("Threads:"),
            std::distance(begin(open), end(open))};
}

LongRunRecorder::LongRunRecorder(const std::filesystem::path& folder)
    : m_file(gf_openRunFile(folder / "minutes.csv"))
{
    m_file << "minute,created,removed,alive,memory_mb,threads,descriptors\n";
}

void LongRunRecorder::onSecond(int32_t now, VirtualSimulator& simulator)
{
    simulator.takeCalls();
    if (now % kTicksPerMinute != 0) {
        return;
    }
    const SimulatorCounts counts = simulator.counts();
    const LongRunMinute& m = m_minutes.emplace_back(LongRunMinute{
        now / kTicksPerMinute, counts.created, counts.removed, simulator.objects().size(), gf_processUse()});
    m_file << format("{},{},{},{},{:.1f},{},{}\n", m.minute, m.created, m.removed, m.alive, m.use.memoryMb,
                     m.use.threads, m.use.descriptors);
}

std::string gf_hoursText(const std::vector<LongRunMinute>& minutes)
{
    std::string text = "hour  created  removed  alive  memory MB  threads  descriptors\n";
    for (const LongRunMinute& m : minutes) {
        if (m.minute % kMinutesPerHour == 0) {
            text += format("{:4}  {:7}  {:7}  {:5}  {:9.1f}  {:7}  {:11}\n", m.minute / kMinutesPerHour,
                           m.created, m.removed, m.alive, m.use.memoryMb, m.use.threads, m.use.descriptors);
        }
    }
    return text;
}

std::vector<std::string> gf_longRunFaults(const std::vector<LongRunMinute>& minutes, const ProcessUse& before,
                                          const ProcessUse& after)
{
    std::vector<std::string> faults;
    const LongRunMinute* firstHour = nullptr;
    for (const LongRunMinute& m : minutes) {
        if (m.created - m.removed != m.alive) {
            faults.push_back(format("minute {}: {} objects created, {} removed, but {} alive", m.minute,
                                    m.created, m.removed, m.alive));
        }
        if (m.minute % kMinutesPerHour != 0) {
            continue;
        }
        if (firstHour == nullptr) {
            firstHour = &m;
        }
        if (const double grown = m.use.memoryMb - firstHour->use.memoryMb; grown > kMostGrowthMb) {
            faults.push_back(format("hour {}: memory has grown by {:.1f} MB since the first",
                                    m.minute / kMinutesPerHour, grown));
        }
    }
    if (after.threads > before.threads) {
        faults.push_back(format("{} threads are left over", after.threads - before.threads));
    }
    if (after.descriptors > before.descriptors) {
        faults.push_back(format("{} descriptors are left over", after.descriptors - before.descriptors));
    }
    return faults;
}

}  // namespace vlt
