// The server's airport files, fetched beside the worker: no server, however slow, holds the traffic.
//
// The worker asks, and asks again after an answer has come. Each file is fetched in a thread of its own,
// which ends with the run. State: what was asked for lately, for five minutes.
#pragma once

#include <memory>
#include <string>

namespace vlt {

// What the server has under a path.
struct ServerFile {
    bool awaited = false;                     // it hasn't answered yet
    std::shared_ptr<const std::string> text;  // the file; nullptr: there is none, or it didn't come in time
};

// Asks for the file, unless that was done in the last five minutes. Never waits.
ServerFile gf_serverFile(const std::string& path);

// An answer has come since the last call.
bool gf_serverAnswered();

// Forgets everything and joins the threads, at once if the run is to stop.
void gf_forgetServerFiles();

}  // namespace vlt
