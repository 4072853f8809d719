// velatra-tool bgl: what a scenery file decodes to.
//
// JSON lines on standard output: each airport, its stands, and every parking that makes none, with the
// reason.
#pragma once

#include <string>

namespace vlt {

struct BglOptions {
    std::string file;
};

// The exit code: 0, or 1 for a file without airports.
int gf_bgl(const BglOptions& options);

}  // namespace vlt
