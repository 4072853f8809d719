// Any bytes as parameters.xml. Reading must leave every value in its range and a file that reads the same.
#include "core/base/parameters.h"
#include "core/base/paths.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace vlt;

static void lf_prepareOnce()
{
    static const bool ready = [] {
        const auto folder =
            std::filesystem::temp_directory_path() / ("velatra-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder / "Velatra");
        ::setenv("VELATRA_APPDATA", folder.c_str(), 1);
        std::atexit([] { std::filesystem::remove_all(gf_parametersFile().parent_path().parent_path()); });
        return true;
    }();
    if (!ready) {
        std::abort();
    }
}

static void lf_checkRanges()
{
    for (const IntParameter* p : gf_parameters<int32_t>()) {
        if (p->value < p->min || p->value > p->max) {
            std::abort();
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    lf_prepareOnce();
    std::ofstream(gf_parametersFile(), std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    readParameters();
    lf_checkRanges();
    const int32_t range = LATERAL_RANGE.value;
    readParameters();
    if (range != LATERAL_RANGE.value) {
        std::abort();
    }
    return 0;
}
