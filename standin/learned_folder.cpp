#include "standin/learned_folder.h"

#include "airports/learned_file.h"

namespace vlt {

std::filesystem::path gf_learnedIn(const std::filesystem::path& folder, const std::string& code)
{
    return folder / (code + ".xml");
}

void gf_layLearnedOver(const std::filesystem::path& folder, const std::string& code, AirportLoad& load)
{
    const std::filesystem::path file = gf_learnedIn(folder, code);
    if (folder.empty() || !std::filesystem::exists(file)) {
        return;
    }
    load.learned = true;
    lf_readLearned(file, file.string(), load.apf, load.settings);
    gf_numberStands(load.apf.stands);
}

}  // namespace vlt
