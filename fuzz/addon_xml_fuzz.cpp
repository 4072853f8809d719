// Any bytes as the add-on.xml of a package and as the list of add-on sceneries: no folder found may be empty.
#include "fuzz/seeds.h"
#include "liveries/livery_packages.h"
#include "scenery/scenery_list.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>

using namespace vlt;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    gf_seed(*argc, *argv, "package",
            "<?xml version=\"1.0\"?>\n<!-- a <Path> -->\n<AddOn.Component><Category>SimObjects</Category>\n"
            "<Path>Sim &amp; Objects</Path></AddOn.Component>\n<List><Path>C:\\A</Path></List>\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<std::string> lines;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    const std::vector<std::string> all = gf_addOnPathsOf(lines);
    const std::vector<std::string> objects = gf_simobjectFolders(lines, "C:\\package");
    gf_require(objects.size() <= all.size());
    for (const auto* folders : {&all, &objects}) {
        for (const std::string& folder : *folders) {
            gf_require(!folder.empty());
        }
    }
    return 0;
}
