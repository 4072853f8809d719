#include "standin/seed_table.h"

#include "core/base/text.h"
#include "standin/run_files.h"

#include <set>

namespace vlt {

static void lf_append(std::vector<DueMeasure>& to, const std::vector<DueMeasure>& from)
{
    to.insert(to.end(), from.begin(), from.end());
}

void SeedTable::add(uint64_t seed, const ReplayResult& result)
{
    m_rows.push_back({format("{}", seed), result.aircraftSeconds / 3600, result.findings.invariantBreakCount,
                      gf_runMotion(result.lives).byKind});
    const DueFindings& due = result.findings.due;
    for (size_t i = 0; i < due.bands.size(); ++i) {
        lf_append(m_due.bands[i].metres, due.bands[i].metres);
        lf_append(m_due.bands[i].feet, due.bands[i].feet);
        lf_append(m_due.bands[i].seconds, due.bands[i].seconds);
    }
    lf_append(m_due.rotations, due.rotations);
}

int64_t SeedTable::invariantBreaks() const
{
    int64_t sum = 0;
    for (const Row& row : m_rows) {
        sum += row.invariantBreaks;
    }
    return sum;
}

static std::string lf_spreads(const std::vector<DueMeasure>& measures)
{
    const DueSpread spread = gf_spreadOf(measures);
    return measures.empty() ? format(" {:>22}", "-")
                            : format(" {:>6.2f} {:>7.2f} {:>7.1f}", spread.median, spread.most,
                                     std::abs(spread.worst.value));
}

std::string SeedTable::text() const
{
    Row all{"all", 0, 0, {}};
    for (const Row& row : m_rows) {
        all.hours += row.hours;
        all.invariantBreaks += row.invariantBreaks;
        for (const auto& [kind, count] : row.breaks) {
            all.breaks[kind] += count;
        }
    }
    std::string text = format("{:5}{:>9}{:>12}", "seed", "hours", "invariants");
    for (const auto& [kind, count] : all.breaks) {
        text += format("{:>14}", kind);
    }
    text += format("{:>10}\n", "per hour");
    const auto add = [&](const Row& row) {
        text += format("{:5}{:>9.1f}{:>12}", row.name, row.hours, row.invariantBreaks);
        int64_t sum = 0;
        for (const auto& [kind, total] : all.breaks) {
            const auto found = row.breaks.find(kind);
            const int64_t count = found == row.breaks.end() ? 0 : found->second;
            text += format("{:>14}", count);
            sum += count;
        }
        text += format("{:>10.2f}\n", row.hours > 0 ? static_cast<double>(sum) / row.hours : 0);
    };
    for (const Row& row : m_rows) {
        add(row);
    }
    add(all);
    text += format("\n{:14}{:>23}{:>23}{:>23}\n", "off due:", "seconds median/95%/max", "metres", "feet");
    for (size_t i = 0; i < m_due.bands.size(); ++i) {
        const DueBandFindings& band = m_due.bands[i];
        text += format("{:14}{}{}{}\n", kDueBandNames[i], lf_spreads(band.seconds), lf_spreads(band.metres),
                       lf_spreads(band.feet));
    }
    return text + format("{:14}{}\n", "rotations", lf_spreads(m_due.rotations));
}

}  // namespace vlt
