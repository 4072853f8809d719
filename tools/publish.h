// velatra-tool publish: makes the files of the download server, and the airport catalogue.
//
// Each function prints what it wrote as JSON lines, gives the exit code, and throws if it can't write.
#pragma once

#include "standin/world_tables.h"

#include <string>

namespace vlt {

// What the options of one subcommand say.
struct PublishOptions {
    std::string world = gf_sampleWorld().string();
    std::string out = ".";  // folder; a file for the catalogue and the single airport
    std::string in;         // the catalogue's source, or a stands table
    std::string base;       // the catalogue to which a world's airports are added
    std::string name;       // of the single airport
    int elevation = 0;      // of the single airport, feet
};

int gf_publishDbase(const PublishOptions& options);
int gf_publishRegcodes(const PublishOptions& options);
int gf_publishLiveries(const PublishOptions& options);
// The user's side of them: an add-on package whose scan gives the same.
int gf_publishLiveryTree(const PublishOptions& options);

// The user's add-on sceneries with the world's airports.
int gf_publishSceneryTree(const PublishOptions& options);

// From a JSON list of airports, or from `base` and the world's airports.
int gf_publishCatalogue(const PublishOptions& options);

// The archive as the server keeps it.
int gf_publishAirports(const PublishOptions& options);

// One archived airport file from a table of stands.
int gf_publishAirport(const PublishOptions& options);

}  // namespace vlt
