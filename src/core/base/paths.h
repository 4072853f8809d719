// Where the program keeps its files. Relative paths lie below the current directory, the install folder.
//
// Constants and pure functions; any thread.
#pragma once

#include <filesystem>
#include <string>

namespace vlt {

inline const std::filesystem::path kDocsFolder = "docs";
inline const std::filesystem::path kInputFolder = "input";
inline const std::filesystem::path kMyRegcodesFolder = "input/my_regcodes";
inline const std::filesystem::path kOutputFolder = "output";
inline const std::filesystem::path kInfoFolder = "output/info";
inline const std::filesystem::path kErrorsFolder = "output/errors";
inline const std::filesystem::path kAirportsFolder = "airports";
inline const std::filesystem::path kLearnedFolder = "airports/learned";
inline const std::filesystem::path kMyThirdpartyFolder = "airports/my_thirdparty";
inline const std::filesystem::path kMyOrbxFolder = "airports/my_ORBX";
inline const std::filesystem::path kMyParkAirportsFile = "airports/my_park_airports.txt";
inline const std::filesystem::path kLiveriesScannedFile = "output/LiveriesScanned.xml";
inline const std::filesystem::path kInstallerFile = "install_new_version.exe";
inline const std::filesystem::path kAirportsCatalogueFile = "airports_p3d.xml";

// `parameters.xml` in the data folder of the user's roaming application data.
std::filesystem::path gf_parametersFile();

// A path as the user knows it: with a drive letter where there is one, and backslashes.
std::string gf_shown(const std::filesystem::path& path);

// Creates every folder of the program that doesn't exist. Throws std::filesystem::filesystem_error,
// named "create_directory", with the path.
void makeFolders();

}  // namespace vlt
