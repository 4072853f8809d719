// Drawing as SVG: the elements of a page, and a map that shows the surroundings of a place on it.
//
// Pure functions that give texts; any thread. Lengths on the page in its own units.
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

struct PageBox {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
};
bool gf_isInside(const PageBox& box, PagePoint point);

// Elements. `style` is further attributes, such as "class='row'". Any text may be given: what XML can't hold
// becomes "?".
std::string gf_svgText(PagePoint at, std::string_view text, std::string_view style);
std::string gf_svgLine(const std::vector<PagePoint>& points, std::string_view style);
// A line whose style changes on the way: each piece begins where the one before it ended.
struct StyledPoint {
    PagePoint at;
    std::string style;
};
std::string gf_svgPieces(const std::vector<StyledPoint>& points);
std::string gf_svgCircle(PagePoint centre, double radius, std::string_view style);
std::string gf_svgBox(const PageBox& box, std::string_view style);

// A path around its own origin, turned clockwise, enlarged, and moved to `at`.
std::string gf_svgSymbol(std::string_view path, PagePoint at, double turnDeg, double scale,
                         std::string_view style);

// An aircraft from above, nose up, with a length and a span of 20 units.
inline constexpr std::string_view kPlanePath =
    "M0,-10 L1.6,-5 L1.6,-1.5 L10,3.5 L10,5.5 L1.6,3 L1.2,7 L4,9 L4,10 L0,9 "
    "L-4,10 L-4,9 L-1.2,7 L-1.6,3 L-10,5.5 L-10,3.5 L-1.6,-1.5 L-1.6,-5 Z";
inline constexpr double kPlaneLength = 20;

// The document.
std::string gf_svgPage(double width, double height, std::string_view css, std::string_view content);

// A part of the page, north up.
struct SvgMap {
    PageBox frame;
    LatLon centre;        // in the middle of the frame
    double pagePerM = 1;  // page units to a metre
};
PagePoint gf_onPage(const SvgMap& map, LatLon place);

}  // namespace vlt
