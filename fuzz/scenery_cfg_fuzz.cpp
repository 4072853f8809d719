// Any bytes as the simulator's scenery library: every path found must be one of the Windows form.
#include "core/base/cfg_entries.h"
#include "fuzz/seeds.h"
#include "scenery/scenery_list.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>

using namespace vlt;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    gf_seed(*argc, *argv, "library",
            "[General]\nTitle=x\n[Area.001]\nTitle=a\nLocal=Scenery\\World\nActive=TRUE\nRequired=FALSE\n"
            "[AREA.2]\nLOCAL=C:\\Own\nACTIVE=true\nLayer=2\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<std::string> lines;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    const std::vector<std::string> paths = gf_areasOf(lines);
    gf_require(paths.size() <= gf_cfgEntries(lines).size());
    for (const std::string& path : paths) {
        gf_require(!path.empty() && path.find('/') == std::string::npos);
    }
    return 0;
}
