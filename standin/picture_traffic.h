// The aircraft on a map of the picture: tracks, symbols, labels.
//
// Pure functions; any thread.
#pragma once

#include "standin/sim_object.h"
#include "standin/svg_canvas.h"

#include <string>
#include <vector>

namespace vlt {

// Still there at `now`, or gone no more than a moment before: when the program leaves, all its aircraft
// go at once, and the picture shows them as they were.
bool gf_isPresent(const ObjectLife& life, double now);

// "gnd", "2600 ft" or "FL340".
std::string gf_heightText(const TrackPoint& point);

// SVG of everybody's tracks, with symbols and labels of those that are still there. `now` is the
// simulator's clock, `size` scales the symbols. Who is nearer to the map's centre than `nearNm`
// gets no label: another map has it.
std::string gf_trafficOnMap(const SvgMap& map, const std::vector<ObjectLife>& lives, double now, double size,
                            double nearNm);

}  // namespace vlt
