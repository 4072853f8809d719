// The plain tables of a world folder: CSV files with a header line.
//
// File reading only; no state.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// The folder of the sample world: `data/world` below the current directory, else beside the program.
std::filesystem::path gf_sampleWorld();

// A table as texts; every row has as many cells as the header.
struct WorldTable {
    std::string name;  // of the file, for messages
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;
};

// The cells of one CSV line; a cell in quotation marks may hold commas and doubled quotation marks.
std::vector<std::string> gf_csvCells(const std::string& line);

// Reads `name` of the folder. Throws std::runtime_error for a file that can't be read, or for a row with
// another number of cells than the header, naming file and row.
WorldTable gf_readWorldTable(const std::filesystem::path& world, const std::string& name);

// The place of a column. Throws std::runtime_error, naming it, when the table has none of this name.
size_t gf_columnOf(const WorldTable& table, std::string_view column);

// All cells of one column.
std::vector<std::string> gf_columnCells(const WorldTable& table, std::string_view column);

}  // namespace vlt
