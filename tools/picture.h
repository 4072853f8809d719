// velatra-tool picture: the pictures of docs/motion.md, drawn from a replay of the built-in day.
#pragma once

#include "standin/world_tables.h"

#include <filesystem>

namespace vlt {

struct PictureOptions {
    std::filesystem::path world = gf_sampleWorld();  // folder of the plain tables
    std::filesystem::path out = "docs/pictures";
    double seconds = 1800;  // of the replay
};

// Writes one SVG for each picture and prints its path; the same program and world give the same bytes. 0.
// Throws if a picture's subject doesn't happen in these seconds, or a file can't be written.
int gf_picture(const PictureOptions& options);

}  // namespace vlt
