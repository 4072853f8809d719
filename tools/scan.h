// velatra-tool scan: the livery scan and the scenery scan, of any folders into any folder.
//
// Each gives the exit code; what was found and where the results lie is one JSON line, the log goes to
// Log.txt in the folder of the results.
#pragma once

#include <string>
#include <vector>

namespace vlt {

struct ScanOptions {
    std::vector<std::string> folders;  // to be searched; in any form of path
    std::string out = ".";             // the folder for results and reports
    std::string dbase;                 // dbase.zip or the document in it; empty: from the server
    int threads = 0;                   // at a time; 0: as many as the hardware has
    bool prioritize = false;           // earlier folders win
};

int gf_scanLiveries(const ScanOptions& options);
int gf_scanScenery(const ScanOptions& options);

}  // namespace vlt
