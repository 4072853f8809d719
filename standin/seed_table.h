// One table over the replays of several seeds: what broke, and how far objects were from where they were due.
#pragma once

#include "standin/replay.h"

#include <string>
#include <vector>

namespace vlt {

class SeedTable
{
public:
    void add(uint64_t seed, const ReplayResult& result);
    int64_t invariantBreaks() const;
    // Plain text, a row per seed, one of all, and one per band of flight over all seeds.
    std::string text() const;

private:
    struct Row {
        std::string name;
        double hours = 0;
        int64_t invariantBreaks = 0;
        std::map<std::string, int64_t> breaks;  // of motion, by kind
    };
    std::vector<Row> m_rows;
    DueFindings m_due;  // of all seeds
};

}  // namespace vlt
