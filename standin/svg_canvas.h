// Drawing of a map as SVG: a frame on the page that shows the surroundings of a place.
//
// A SvgMap belongs to whoever made it; one thread.
#pragma once

#include "traffic/geodesy.h"

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

struct PagePoint {
    double x = 0;
    double y = 0;
};

// A square frame of the page, north up.
struct SvgMap {
    double left = 0;
    double top = 0;
    double side = 0;  // of the square, page units
    LatLon centre;
    double radiusNm = 0;  // from the centre to each edge
};

PagePoint gf_onPage(const SvgMap& map, LatLon place);
bool gf_inFrame(const SvgMap& map, PagePoint point);
double gf_pagePerNm(const SvgMap& map);

// "x,y" with a tenth of a unit.
std::string gf_pair(PagePoint point);

// A text safe between tags and in attributes; bytes that XML can't hold become "?".
std::string gf_xmlText(std::string_view text);

// The colour of a height in feet, on the ground apart: from blue on the ground over green to red.
std::string gf_heightColour(double feet, bool onGround);

// Boxes on the page that must not overlap: where labels are.
struct PageBox {
    double left = 0, top = 0, right = 0, bottom = 0;
};
bool gf_overlaps(const PageBox& a, const PageBox& b);

}  // namespace vlt
