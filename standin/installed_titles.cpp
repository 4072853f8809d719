#include "standin/installed_titles.h"

#include "standin/world_tables.h"
#include "traffic/geodesy.h"

#include <charconv>
#include <fstream>
#include <map>
#include <optional>

namespace vlt {

static std::optional<double> lf_number(const std::string& text)
{
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? std::optional(value) : std::nullopt;
}

static std::optional<InstalledTitle> lf_title(const std::map<std::string, std::string>& row)
{
    const auto cell = [&](const char* name) {
        const auto found = row.find(name);
        return found == row.end() ? std::string() : found->second;
    };
    const auto cg = lf_number(cell("cg_ft"));
    const auto pitch = lf_number(cell("static_pitch_deg"));
    if (cell("title").empty() || !cg || !pitch) {
        return std::nullopt;
    }
    return InstalledTitle{cell("title"), cell("model"), cell("category"), *cg, *pitch * kRadPerDeg};
}

std::vector<InstalledTitle> gf_readTitles(const std::filesystem::path& file)
{
    std::vector<InstalledTitle> titles;
    std::ifstream in(file);
    std::string line;
    if (!std::getline(in, line)) {
        return titles;
    }
    const std::vector<std::string> header = gf_csvCells(line);
    while (std::getline(in, line)) {
        const std::vector<std::string> cells = gf_csvCells(line);
        std::map<std::string, std::string> row;
        for (size_t i = 0; i < header.size() && i < cells.size(); ++i) {
            row[header[i]] = cells[i];
        }
        if (auto title = lf_title(row)) {
            titles.push_back(std::move(*title));
        }
    }
    return titles;
}

}  // namespace vlt
