#include "standin/svg_canvas.h"

#include "core/base/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vlt {

struct ColourStop {
    double feet;
    int red, green, blue;
};

// From the ground's neighbourhood to the airways.
constexpr std::array<ColourStop, 6> kStops{{{0, 94, 234, 140},
                                            {4000, 190, 235, 80},
                                            {10000, 255, 214, 70},
                                            {18000, 255, 150, 60},
                                            {30000, 255, 86, 108},
                                            {41000, 206, 120, 255}}};

PagePoint gf_onPage(const SvgMap& map, LatLon place)
{
    const double nm = distNm(map.centre, place);
    const double angle = nm > 0 ? bearing(map.centre, place) : 0;
    const double scale = gf_pagePerNm(map);
    return {map.left + map.side / 2 + nm * scale * std::sin(angle),
            map.top + map.side / 2 - nm * scale * std::cos(angle)};
}

bool gf_inFrame(const SvgMap& map, PagePoint point)
{
    return point.x >= map.left && point.x <= map.left + map.side && point.y >= map.top &&
           point.y <= map.top + map.side;
}

double gf_pagePerNm(const SvgMap& map)
{
    return map.side / 2 / map.radiusNm;
}

std::string gf_pair(PagePoint point)
{
    return format("{:.1f},{:.1f}", point.x, point.y);
}

std::string gf_xmlText(std::string_view text)
{
    std::string safe;
    for (const char c : text) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7E ? '?' : c;
            break;
        }
    }
    return safe;
}

std::string gf_heightColour(double feet, bool onGround)
{
    if (onGround) {
        return "#5fb4ff";
    }
    size_t i = 1;
    while (i + 1 < kStops.size() && feet > kStops[i].feet) {
        ++i;
    }
    const ColourStop& a = kStops[i - 1];
    const ColourStop& b = kStops[i];
    const double part = std::clamp((feet - a.feet) / (b.feet - a.feet), 0.0, 1.0);
    const auto mix = [part](int from, int to) {
        return static_cast<int>(std::lround(from + (to - from) * part));
    };
    return format("#{:02x}{:02x}{:02x}", mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue));
}

bool gf_overlaps(const PageBox& a, const PageBox& b)
{
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

}  // namespace vlt
