#include "standin/world_tables.h"

#include "core/base/text.h"
#include "platform/folders.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace vlt {

std::vector<std::string> gf_csvCells(const std::string& line)
{
    std::vector<std::string> cells(1);
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
            cells.back() += '"';
            ++i;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            cells.emplace_back();
        } else if (c != '\r') {
            cells.back() += c;
        }
    }
    return cells;
}

std::filesystem::path gf_sampleWorld()
{
    std::filesystem::path here = "data/world";
    std::error_code error;
    return std::filesystem::exists(here, error) ? here : gf_programFolder() / here;
}

WorldTable gf_readWorldTable(const std::filesystem::path& world, const std::string& name)
{
    std::ifstream in(world / name);
    std::string line;
    if (!std::getline(in, line)) {
        throw std::runtime_error(
            format("{}: can't be read", std::filesystem::absolute(world / name).string()));
    }
    WorldTable table{name, gf_csvCells(line), {}};
    for (size_t number = 2; std::getline(in, line); ++number) {
        if (gf_trimmed(line).empty()) {
            continue;
        }
        std::vector<std::string> cells = gf_csvCells(line);
        if (cells.size() != table.header.size()) {
            throw std::runtime_error(
                format("{}:{}: {} cells, not {}", name, number, cells.size(), table.header.size()));
        }
        table.rows.push_back(std::move(cells));
    }
    return table;
}

size_t gf_columnOf(const WorldTable& table, std::string_view column)
{
    const auto found = std::find(table.header.begin(), table.header.end(), column);
    if (found == table.header.end()) {
        throw std::runtime_error(format("{}: no column {}", table.name, column));
    }
    return static_cast<size_t>(found - table.header.begin());
}

std::vector<std::string> gf_columnCells(const WorldTable& table, std::string_view column)
{
    const size_t place = gf_columnOf(table, column);
    std::vector<std::string> cells;
    cells.reserve(table.rows.size());
    for (const std::vector<std::string>& row : table.rows) {
        cells.push_back(row[place]);
    }
    return cells;
}

}  // namespace vlt
