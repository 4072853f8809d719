#include "standin/svg_canvas.h"

#include "core/base/text.h"

#include <cmath>

namespace vlt {

bool gf_isInside(const PageBox& box, PagePoint point)
{
    return point.x >= box.left && point.x <= box.left + box.width && point.y >= box.top &&
           point.y <= box.top + box.height;
}

static std::string lf_xmlText(std::string_view text)
{
    std::string safe;
    for (const char c : text) {
        if (c == '&') {
            safe += "&amp;";
        } else if (c == '<') {
            safe += "&lt;";
        } else if (c == '>') {
            safe += "&gt;";
        } else {
            safe += c < 0x20 || c > 0x7E ? '?' : c;
        }
    }
    return safe;
}

std::string gf_svgText(PagePoint at, std::string_view text, std::string_view style)
{
    return format("<text x='{:.1f}' y='{:.1f}' {}>{}</text>\n", at.x, at.y, style, lf_xmlText(text));
}

std::string gf_svgLine(const std::vector<PagePoint>& points, std::string_view style)
{
    std::string places;
    for (const PagePoint& point : points) {
        places += format("{:.1f},{:.1f} ", point.x, point.y);
    }
    return format("<polyline points='{}' {}/>\n", places, style);
}

std::string gf_svgPieces(const std::vector<StyledPoint>& points)
{
    std::string svg;
    std::vector<PagePoint> piece;
    for (size_t i = 0; i < points.size(); ++i) {
        piece.push_back(points[i].at);
        const bool ends = i + 1 == points.size() || points[i + 1].style != points[i].style;
        if (ends && piece.size() > 1) {
            svg += gf_svgLine(piece, points[i].style);
        }
        if (ends) {
            piece = {points[i].at};
        }
    }
    return svg;
}

std::string gf_svgCircle(PagePoint centre, double radius, std::string_view style)
{
    return format("<circle cx='{:.1f}' cy='{:.1f}' r='{:.1f}' {}/>\n", centre.x, centre.y, radius, style);
}

std::string gf_svgBox(const PageBox& box, std::string_view style)
{
    return format("<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='{:.1f}' {}/>\n", box.left, box.top,
                  box.width, box.height, style);
}

std::string gf_svgSymbol(std::string_view path, PagePoint at, double turnDeg, double scale,
                         std::string_view style)
{
    return format("<path transform='translate({:.1f},{:.1f}) rotate({:.1f}) scale({:.3f})' d='{}' {}/>\n",
                  at.x, at.y, turnDeg, scale, path, style);
}

std::string gf_svgPage(double width, double height, std::string_view css, std::string_view content)
{
    return format(
        "<svg xmlns='http://www.w3.org/2000/svg' width='{0}' height='{1}' viewBox='0 0 {0} {1}'>\n"
        "<style>text{{font-family:'DejaVu Sans',Verdana,sans-serif}}polyline{{fill:none}}{2}</style>\n"
        "{3}</svg>\n",
        width, height, css, content);
}

PagePoint gf_onPage(const SvgMap& map, LatLon place)
{
    const double way = distNm(map.centre, place) * kMetresPerNm * map.pagePerM;
    const double angle = bearing(map.centre, place);
    return {map.frame.left + map.frame.width / 2 + way * std::sin(angle),
            map.frame.top + map.frame.height / 2 - way * std::cos(angle)};
}

}  // namespace vlt
